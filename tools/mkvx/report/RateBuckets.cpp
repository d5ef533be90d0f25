#include "report/RateBuckets.h"

#include <algorithm>

namespace mkvx {
namespace {

// Long enough for several frames, so that a rate means something.
constexpr int64_t kWidthsUs[] = {200000,   500000,   1000000,  2000000,  5000000,
                                 10000000, 15000000, 30000000, 60000000, 300000000};

}  // namespace

RateBuckets::RateBuckets(int64_t durationUs) : mWidthUs(kWidthsUs[0]) {
    for (const int64_t width : kWidthsUs)
        if (durationUs / mWidthUs >= int64_t(kMost) / 2) mWidthUs = width;
}

void RateBuckets::add(int64_t timeUs, uint64_t bytes, bool isKey) {
    const int64_t time = std::max<int64_t>(timeUs, 0);
    while (time / mWidthUs >= int64_t(kMost)) joinNeighbours();  // bounded: 64 bits of time
    const auto place = size_t(time / mWidthUs);
    if (place >= mBuckets.size()) mBuckets.resize(place + 1);
    RateBucket& bucket = mBuckets[place];
    bucket.bytes += bytes;
    bucket.units += 1;
    bucket.keys += isKey ? 1 : 0;
}

void RateBuckets::joinNeighbours() {
    for (size_t i = 0; i < mBuckets.size(); ++i) {
        RateBucket& into = mBuckets[i / 2];
        if (i % 2 == 0) {
            into = mBuckets[i];
            continue;
        }
        into.bytes += mBuckets[i].bytes;
        into.units += mBuckets[i].units;
        into.keys += mBuckets[i].keys;
    }
    mBuckets.resize((mBuckets.size() + 1) / 2);
    mWidthUs *= 2;
}

}  // namespace mkvx
