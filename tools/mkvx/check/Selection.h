// Which files a run examines: what is named, what a list names, and of them a machine's share.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "check/FolderWalk.h"
#include "cli/Arguments.h"

namespace mkvx {

// The I-th of N shares. A path's share depends on its bytes and N alone, so that machines that get the same
// paths agree without asking each other.
struct Shard {
    uint64_t part = 1, of = 1;

    bool holds(const std::string& path) const;
};

struct Selection {
    std::vector<std::string> paths;
    std::string listFile;  // with a path a line; "-" is standard input, empty none
    bool isNulSeparated = false;
    Shard shard;
};

// Adds PATH, --files-from, --null and --shard.
void addSelectionOptions(Arguments& command, Selection& selection);

// Throws UsageFailure when nothing is named, FileFailure when the list cannot be read or holds no path.
std::vector<std::string> namedPaths(const Selection& selection);

// The share of what was found. A folder's files are shared out one by one.
std::vector<FoundFile> shareOf(const Shard& shard, std::vector<FoundFile> files);

}  // namespace mkvx
