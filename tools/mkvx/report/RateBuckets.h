// What a track delivers over time, in equal stretches of time, bounded in memory for any times.
//
// Times are microseconds; what lies before 0 counts into the first stretch. When a time lies beyond the last
// of kMost stretches, neighbours are joined and the stretches become twice as long.
#pragma once
#include <cstddef>
#include <cstdint>
#include <vector>

namespace mkvx {

struct RateBucket {
    uint64_t bytes = 0, units = 0, keys = 0;
};

class RateBuckets {
  public:
    static constexpr size_t kMost = 600;

    // Starts with stretches that suit the duration: 0 when it is not known.
    explicit RateBuckets(int64_t durationUs = 0);

    void add(int64_t timeUs, uint64_t bytes, bool isKey);

    int64_t widthUs() const { return mWidthUs; }
    // From time 0 on, up to the last one that something fell into.
    const std::vector<RateBucket>& buckets() const { return mBuckets; }

  private:
    void joinNeighbours();

    int64_t mWidthUs;
    std::vector<RateBucket> mBuckets;
};

}  // namespace mkvx
