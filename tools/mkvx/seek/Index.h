// The sync index of a file and what it is made from, read with this program's own copy of the reader.
#pragma once
#include <media/stagefright/DataSource.h>
#include <cstdint>
#include <string>
#include <vector>

namespace android {
class MatroskaExtExtractor;
}

namespace mkvx {

struct IndexEntry {
    int64_t timeUs = 0;
    uint64_t position = 0;  // of the Cluster, bytes from the Segment's data start
};

// A stretch of the file's duration without a sync point.
struct IndexGap {
    int64_t fromUs = 0, toUs = 0;
};

struct IndexReport {
    std::string source;               // "cues", "scan" or "none"
    bool isStreamed = false;          // the source caches a network stream: no index is made
    std::vector<IndexEntry> entries;  // ascending by time
    int64_t durationUs = 0;           // as seeking sees it
    uint32_t masterTrack = 0;         // TrackNumber; seeks look only at cue points that name it
    uint64_t points = 0;              // cue points of the file, or made by the scan
    uint64_t masterPoints = 0;        // those that name the master track
};

// Throws nothing; a file that cannot be read gives an empty report. Construction can end the process exactly
// where the plug-in's does: try that first.
IndexReport readIndex(const android::sp<android::DataSource>& source);
// Of a file that is open already.
IndexReport readIndex(android::MatroskaExtExtractor& extractor);

// The stretches longer than `limitUs` between the start, the entries and the end.
std::vector<IndexGap> gapsOf(const IndexReport& report, int64_t limitUs);

}  // namespace mkvx
