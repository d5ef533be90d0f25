// The seek targets of the benchmark, the same for every program that is measured.
#pragma once
#include <cstddef>
#include <cstdint>
#include <vector>

namespace mkvx {

// Repeatable targets, spread evenly over the duration: splitmix64 from a fixed seed.
inline std::vector<int64_t> seekTargets(size_t count, int64_t durationUs) {
    std::vector<int64_t> targets;
    uint64_t state = 20240229;
    for (size_t i = 0; i < count; ++i) {
        state += 0x9E3779B97F4A7C15u;
        uint64_t bits = state;
        bits = (bits ^ (bits >> 30)) * 0xBF58476D1CE4E5B9u;
        bits = (bits ^ (bits >> 27)) * 0x94D049BB133111EBu;
        bits ^= bits >> 31;
        const double share = double(bits >> 11) / 9007199254740992.0;  // 53 bits, 0 to 1
        targets.push_back(int64_t(share * double(durationUs)));
    }
    return targets;
}

}  // namespace mkvx
