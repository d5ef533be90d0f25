// Where a source lands: the first unit after a request, and what the byte source had to give for it.
#pragma once
#include <media/stagefright/MediaSource.h>
#include <cstdint>
#include <vector>

#include "base/Digest.h"
#include "device/Session.h"
#include "seek/Model.h"
#include "source/BenchSource.h"

namespace mkvx {

// What reads have touched, in the order of reading: those that follow each other within kJoined bytes are one
// range, and beyond kMost ranges the last one is stretched.
class ReadRanges {
  public:
    static constexpr uint64_t kJoined = 256;
    static constexpr size_t kMost = 32;

    void note(uint64_t begin, uint64_t end);
    const std::vector<ByteRange>& ranges() const { return mRanges; }
    // Where the last read began.
    uint64_t lastBegin() const { return mLastBegin; }
    void clear() { *this = {}; }

  private:
    std::vector<ByteRange> mRanges;
    uint64_t mLastBegin = 0;
};

// An extractor that nobody has read from yet, or null, on a counted view of the bytes of its own.
struct CountedOpening {
    explicit CountedOpening(const Session& session);

    android::sp<CountingSource> bytes;
    android::sp<android::MediaExtractor> extractor;
    uint64_t work;  // what opening took: its reads, and one for each 32 bytes that it parsed
};

// One started source of one track, on an opening of its own, so that nobody else's reading is counted, or on
// one that is shared: one probe at a time. One thread. Throws FileFailure when the source does not start.
class LandingProbe {
  public:
    LandingProbe(const Session& session, const TrackInfo& track);
    LandingProbe(const CountedOpening& opening, const Session& session, const TrackInfo& track);
    ~LandingProbe();
    LandingProbe(const LandingProbe&) = delete;
    LandingProbe& operator=(const LandingProbe&) = delete;

    // One read, with `options` unless null.
    Landing read(const android::MediaSource::ReadOptions* options);

  private:
    const TrackInfo& mTrack;
    android::sp<CountingSource> mBytes;
    android::sp<android::MediaSource> mSource;
    ReadRanges mRanges;
    Sha1 mSha1;
};

}  // namespace mkvx
