#include "seek/Index.h"

#include <algorithm>

namespace mkvx {

std::vector<IndexGap> gapsOf(const IndexReport& report, int64_t limitUs) {
    std::vector<IndexGap> gaps;
    int64_t last = 0;
    const auto reach = [&](int64_t timeUs) {
        if (timeUs > last && timeUs - last > limitUs) gaps.push_back({last, timeUs});
        last = std::max(last, timeUs);
    };
    for (const IndexEntry& entry : report.entries) reach(entry.timeUs);
    reach(report.durationUs);
    return gaps;
}

}  // namespace mkvx
