// The seek targets of the benchmark, the same for every program that is measured.
#pragma once
#include <cstddef>
#include <cstdint>
#include <vector>

namespace mkvx {

// Repeatable targets, spread evenly over the duration: splitmix64 from a fixed seed.
std::vector<int64_t> seekTargets(size_t count, int64_t durationUs);

}  // namespace mkvx
