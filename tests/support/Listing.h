// What an extractor delivers, as text: one line a track (metadata keys in ascending order as FourCC=value)
// and one line a unit. The same bytes give the same text on every machine, so that the text can be kept in a
// file.
//
//     track 0 dura=1000000 mime=video/avc ...
//     0 time=40000 sync=1 size=512 crc=1a2b3c4d
//     0 end -1011
#pragma once

#include <utils/Errors.h>
#include <utils/String8.h>
#include <media/stagefright/MediaBuffer.h>
#include <media/stagefright/MediaExtractor.h>
#include <media/stagefright/MediaSource.h>
#include <media/stagefright/MetaData.h>

#include <functional>
#include <string>
#include <vector>

#include "support/EbmlWriter.h"

namespace testing_support {

// One delivered unit, copied out of its buffer's range.
struct Unit {
    int64_t timeUs = -1;
    int32_t sync = -1;
    int64_t endUs = -1;  // subtitles only, else -1
    Bytes bytes;

    bool operator==(const Unit& other) const {
        return timeUs == other.timeUs && sync == other.sync && endUs == other.endUs && bytes == other.bytes;
    }
};
std::ostream& operator<<(std::ostream& out, const Unit& unit);

// Four characters, most significant byte first.
std::string KeyName(uint32_t key);
// Every key that is present, ascending. Uses the log to learn them: not for concurrent use with LogCapture.
std::string Describe(const android::sp<android::MetaData>& meta);

// One read. OK gives a unit and releases the buffer; otherwise the status of read, and *unit is untouched.
android::status_t ReadUnit(const android::sp<android::MediaSource>& source, Unit* unit,
                           const android::MediaSource::ReadOptions* options = nullptr);
// Reads until something else than OK comes (stored in *end unless null), at most `limit` units.
std::vector<Unit> ReadAll(const android::sp<android::MediaSource>& source, android::status_t* end = nullptr,
                          size_t limit = 1000000);

using MakeExtractor = std::function<android::sp<android::MediaExtractor>()>;

// Tracks, then units track by track. Subtitle tracks (their MIME begins "text/") get a pass of their own on a
// fresh extractor: track `master` is read unit by unit and the subtitle source is drained after each. A track
// whose read fails stops there, except that up to `retries` failing reads are gone past.
std::string ListTracks(const android::sp<android::MediaExtractor>& extractor);
std::string ListUnits(const MakeExtractor& make, size_t master = 0, size_t retries = 0);

// The subtitle pass alone.
std::vector<Unit> ReadSubtitles(const android::sp<android::MediaExtractor>& extractor, size_t master,
                                size_t subtitle);

}  // namespace testing_support
