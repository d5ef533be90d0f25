// All tracks of one file read by iterators that share it, in any order.
#pragma once

#include <deque>
#include <vector>

#include "properties/PlainWalk.h"
#include "matroska/MatroskaExtIterator.h"
#include "support/FaultySource.h"

namespace testing_support {

// A number that no TrackEntry has: such blocks are delivered as they are stored.
constexpr uint32_t kUnknownTrack = 99;

// The unknown track and all that the file has.
std::vector<uint32_t> TracksOf(const Bytes& bytes);

// What the plain walk finds for each of the tracks, each on a file of its own.
std::vector<Deliveries> PlainListings(const Bytes& bytes, const std::vector<uint32_t>& tracks);

class Readers {
  public:
    Readers(const Bytes& bytes, const std::vector<uint32_t>& tracks, Faults faults = {},
            bool takesPieces = true);

    // One more delivery into the track's listing; false at its end.
    bool Read(size_t track, const android::MediaSource::ReadOptions* options = nullptr);
    void ReadToEnd(size_t track) {
        while (Read(track)) {  // bounded: every delivery passes a frame
        }
    }
    // Forgets what was delivered so far.
    void Restart(size_t track) { mListings[track].clear(); }

    size_t Count() const { return mIterators.size(); }
    const Deliveries& Of(size_t track) const { return mListings[track]; }
    // What reading came to, as seeks count it.
    uint64_t Work() const { return mFile.Reads(); }
    // The kind and place of the last loss.
    std::string LastLoss() const;
    const FaultySource& Source() const { return *mSource; }

  private:
    android::sp<FaultySource> mSource;
    MatroskaExtReader::CMatroskaFile mFile;
    const std::vector<uint32_t> mTracks;
    std::deque<android::MatroskaExtIterator> mIterators;  // neither copied nor moved
    std::vector<Deliveries> mListings;
};

}  // namespace testing_support
