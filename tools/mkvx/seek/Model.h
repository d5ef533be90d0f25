// What the commands of this room print: where seeks and late reads land, and the sync index.
//
// Times are microseconds, positions and sizes bytes of the file. Plain values: copy freely.
#pragma once
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/Format.h"
#include "base/Listing.h"
#include "device/Model.h"
#include "device/SyncIndex.h"

namespace mkvx {

// ---- where a source lands

// Bytes of a source: from `begin` up to but not including `end`.
struct ByteRange {
    uint64_t begin = 0, end = 0;
};

// The first unit after a request, and what the byte source had to give for it.
struct Landing {
    std::optional<Unit> unit;  // nothing: the source answered end of stream
    uint64_t reads = 0;        // requests to the byte source
    uint64_t readBytes = 0;
    uint64_t position = 0;          // in the file, of the last of them: the unit's payload
    std::vector<ByteRange> ranges;  // what these reads touched
};

// ---- seeks

struct SeekProbe {
    size_t track = 0;  // the framework's index
    int64_t targetUs = 0;
    Landing landing;
};

struct SeekReport {
    std::string file;
    std::vector<SeekProbe> seeks;
};

void printText(const SeekReport& report, std::FILE* out);
void printJson(const SeekReport& report, std::FILE* out);
// One seek as a result of its own.
void printJson(const SeekProbe& seek, std::FILE* out);

// kJsonLines, which prints seeks as they come; else the report, at the end.
std::unique_ptr<Listing<SeekProbe>> newSeekListing(Format format, const std::string& file, std::FILE* out);

// ---- a late player

struct LateReport {
    size_t track = 0;              // the framework's index
    size_t at = 0;                 // index of the unit that the player is late for
    int64_t byUs = 0;              // how late it is
    std::optional<int64_t> dueUs;  // that unit's time; nothing behind the last unit
    Landing landing;               // what the player gets
};

void printText(const LateReport& report, std::FILE* out);
void printJson(const LateReport& report, std::FILE* out);

// ---- the sync index

// A stretch of the file's duration without a sync point.
struct IndexGap {
    int64_t fromUs = 0, toUs = 0;
};

struct CoarseIndex {
    std::string file;
    IndexReport index;
    std::vector<IndexGap> gaps;  // that are too long
};

void printText(const CoarseIndex& coarse, std::FILE* out);
void printJson(const CoarseIndex& coarse, std::FILE* out);

}  // namespace mkvx
