// What the report page shows of one file, as plain values: the verdicts (check/Model.h), and what they look
// like over time and over the file. Filled by Collect.cpp and its parts, turned into the page's data by
// Json.cpp.
//
// Times are microseconds, positions and sizes bytes from the file's start. Every list is bounded, and knows
// how much there was. Texts are raw bytes of the file.
#pragma once
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "check/Model.h"
#include "device/Document.h"
#include "device/Model.h"
#include "report/RateBuckets.h"
#include "report/Thinned.h"
#include "seek/Model.h"

namespace mkvx {

// One delivered unit.
struct UnitPoint {
    int64_t timeUs = 0;
    uint64_t size = 0;
    uint64_t position = 0;  // of its block's payload; 0 where that is not known
};

// A cue point's entry for one track.
struct CueMark {
    int64_t timeUs = 0;
    uint64_t position = 0;  // of the Cluster
};

// What an offered track delivers, from its start to its end.
struct TrackTimeline {
    size_t index = 0;
    bool isDelivered = true;  // false: a subtitle track that nothing can arrive at
    Thinned<UnitPoint> keys, others;
    RateBuckets rate;
    uint64_t bytes = 0;
    std::optional<int64_t> firstUs, lastUs;  // smallest and largest time
    std::optional<int64_t> longestKeyGapUs;  // from a key frame to the next, or to the end
    uint64_t unreadable = 0;                 // blocks that gave no unit
    std::optional<int64_t> stopsAfterUs;     // the last unit before the first of these: a player ends there
    Thinned<CueMark> cues;                   // that name this track
};

struct ClusterMark {
    int64_t timeUs = 0;
    uint64_t position = 0;
    uint64_t size = 0;  // header included
    uint64_t blocks = 0;
};

// A stretch of the file that holds one kind of thing: one element of the Segment, or neighbours of one kind.
struct Region {
    std::string name;  // the element's; "unknown element"; "damaged" for bytes that were skipped
    uint64_t begin = 0, end = 0;
    uint64_t elements = 1;
};

struct FileLayout {
    static constexpr size_t kMostRegions = 2000;

    std::vector<Region> regions;  // ascending; the first kMostRegions
    bool isCut = false;           // there were more
    uint64_t missing = 0;         // bytes by which the Segment goes on behind the end of the file
    std::map<std::string, uint64_t> bytesByName;
    Thinned<ClusterMark> clusters;
};

struct LossRow {
    std::string what;  // our sentence
    uint64_t position = 0, size = 0;
};

struct ReportPage {
    // What is drawn or listed at most; the page says what was left out.
    static constexpr size_t kMostTimelines = 24;
    static constexpr size_t kMostRows = 1000;  // of chapters, of attachments, of tracks

    std::string name;  // of the file, without its folders
    CheckedFile checked;
    bool isRead = false;  // all that follows; otherwise the verdict is all there is
    FileInfo info;
    int64_t durationUs = 0;
    std::string title, muxingApp, writingApp, docType;
    std::vector<TrackTimeline> timelines;  // of the first offered tracks
    FileLayout layout;
    IndexReport index;
    Thinned<IndexEntry> indexEntries;  // positions here are of the file, not of the Segment's data
    std::vector<IndexGap> coarse;
    std::vector<SeekProbe> seeks;
    Chapters chapters;        // those that the plug-in reaches, like the next
    Attachments attachments;  // both in full: the reader bounds how many it keeps
    std::vector<LossRow> losses;
    bool isLossListFull = false;  // there may be more
};

}  // namespace mkvx
