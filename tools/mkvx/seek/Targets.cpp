#include "seek/Targets.h"

namespace mkvx {
namespace {

constexpr uint64_t kSeed = 20240229;

uint64_t splitMix64(uint64_t& state) {
    state += 0x9E3779B97F4A7C15u;
    uint64_t bits = state;
    bits = (bits ^ (bits >> 30)) * 0xBF58476D1CE4E5B9u;
    bits = (bits ^ (bits >> 27)) * 0x94D049BB133111EBu;
    return bits ^ (bits >> 31);
}

}  // namespace

std::vector<int64_t> seekTargets(size_t count, int64_t durationUs) {
    std::vector<int64_t> targets;
    uint64_t state = kSeed;
    for (size_t i = 0; i < count; ++i) {
        const double share = double(splitMix64(state) >> 11) / 9007199254740992.0;  // 53 bits, 0 to 1
        targets.push_back(int64_t(share * double(durationUs)));
    }
    return targets;
}

}  // namespace mkvx
