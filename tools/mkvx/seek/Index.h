// Where the sync index of a file is coarse.
#pragma once
#include <cstdint>
#include <vector>

#include "seek/Model.h"

namespace mkvx {

// The stretches longer than `limitUs` between the start, the entries and the end.
std::vector<IndexGap> gapsOf(const IndexReport& report, int64_t limitUs);

}  // namespace mkvx
