// Where a source lands: the first unit after a request, and what the byte source had to give for it.
#pragma once
#include <media/stagefright/MediaSource.h>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/Digest.h"
#include "base/Json.h"
#include "base/Text.h"
#include "device/Model.h"
#include "device/Session.h"
#include "source/BenchSource.h"

namespace mkvx {

// Bytes of a source: from `begin` up to but not including `end`.
struct ByteRange {
    uint64_t begin = 0, end = 0;
};

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

struct Landing {
    std::optional<Unit> unit;  // nothing: the source answered end of stream
    uint64_t reads = 0;        // requests to the byte source
    uint64_t readBytes = 0;
    uint64_t position = 0;          // in the file, of the last of them: the unit's payload
    std::vector<ByteRange> ranges;  // what these reads touched
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

// Microseconds, or [-]HH:MM:SS with up to six decimals. Nothing when the text is neither or does not fit.
std::optional<int64_t> parseTime(const std::string& text);

// Adds landed, reads and read_bytes, the members that the JSON of all landings ends with.
void addLanding(Json& object, const Landing& landing);

// The columns of a table that all landings share.
std::vector<TextTable::Column> landingColumns(std::vector<TextTable::Column> first);
void addLandingRow(TextTable& table, std::vector<std::string> first, const Landing& landing);

}  // namespace mkvx
