// Where the sync index of a file is coarse.
#pragma once
#include <cstdint>
#include <vector>

#include "device/SyncIndex.h"

namespace mkvx {

// A stretch of the file's duration without a sync point.
struct IndexGap {
    int64_t fromUs = 0, toUs = 0;
};

// The stretches longer than `limitUs` between the start, the entries and the end.
std::vector<IndexGap> gapsOf(const IndexReport& report, int64_t limitUs);

}  // namespace mkvx
