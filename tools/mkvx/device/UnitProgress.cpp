#include "device/UnitProgress.h"

#include <algorithm>

namespace mkvx {

UnitProgress::UnitProgress(std::string what, ProgressStyle style, size_t passes)
    : mProgress(std::move(what), style), mPasses(passes) {}

void UnitProgress::beginPass(int64_t durationUs) {
    ++mBegun;
    mDurationUs = durationUs;
}

void UnitProgress::reach(int64_t timeUs, uint64_t size) {
    mState.bytes += size;
    if (mDurationUs > 0 && mPasses > 0) {
        const double within = std::clamp(double(timeUs) / double(mDurationUs), 0.0, 1.0);
        mState.share = (double(mBegun) - 1 + within) / double(mPasses);
    }
    mProgress.reach(mState);
}

}  // namespace mkvx
