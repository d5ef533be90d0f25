// The sync index of a file and what it is made from. Plain values.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

namespace mkvx {

struct IndexEntry {
    int64_t timeUs = 0;
    uint64_t position = 0;  // of the Cluster, bytes from the Segment's data start
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

// What a cue point of the file says of one track.
struct CuePlace {
    uint64_t track = 0;  // TrackNumber
    int64_t timeUs = 0;
    uint64_t position = 0;  // in the file, of the Cluster that it names
};

}  // namespace mkvx
