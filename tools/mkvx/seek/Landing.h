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

// One started source of one track, on an extractor and a view of the bytes of its own, so that nobody else's
// reading is counted. One thread. Throws FileFailure when the source does not start.
class LandingProbe {
  public:
    LandingProbe(const Session& session, const TrackInfo& track);
    ~LandingProbe();

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
