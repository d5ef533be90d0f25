#include "support/FaultySource.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace testing_support {

FaultySource::FaultySource(Bytes bytes, Faults faults) : mBytes(std::move(bytes)), mFaults(faults) {}

size_t FaultySource::Available(off64_t offset, size_t size) const {
    const auto total = static_cast<off64_t>(mBytes.size());
    if (offset < 0 || offset >= total) return 0;
    return std::min(size, static_cast<size_t>(total - offset));
}

size_t FaultySource::Shorten(uint64_t call, size_t available) const {
    available = std::min(available, mFaults.maxBytesPerCall);
    const bool oneLess = mFaults.shortEvery != 0 && (call + 1) % mFaults.shortEvery == 0;
    return oneLess && available > 0 ? available - 1 : available;
}

ssize_t FaultySource::readAt(off64_t offset, void* data, size_t size) {
    const uint64_t call = mReads++;
    if (mFaults.recordCalls) {
        std::lock_guard<std::mutex> lock(mMutex);
        mCalls.push_back({offset, size});
    }
    const bool reachesBadOffset = offset >= 0 && size > 0 && mFaults.errorFromOffset != UINT64_MAX &&
                                  static_cast<uint64_t>(offset) + size > mFaults.errorFromOffset;
    if (call == mFaults.errorAtCall || reachesBadOffset) return mFaults.error;

    const size_t count = Shorten(call, Available(offset, size));
    if (count == 0) return 0;
    std::memcpy(data, mBytes.data() + offset, count);
    mBytesRead += count;
    return static_cast<ssize_t>(count + mFaults.claimedExtra);
}

android::status_t FaultySource::getSize(off64_t* size) {
    *size = mFaults.claimSize ? mFaults.claimedSize : static_cast<off64_t>(mBytes.size());
    return mFaults.sizeStatus;
}

std::vector<FaultySource::Call> FaultySource::Calls() const {
    std::lock_guard<std::mutex> lock(mMutex);
    return mCalls;
}

bool FaultySource::Touched(uint64_t begin, uint64_t end) const {
    const std::vector<Call> calls = Calls();
    return std::any_of(calls.begin(), calls.end(), [&](const Call& call) {
        const auto from = static_cast<uint64_t>(call.offset);
        return from < end && from + call.size > begin;
    });
}

}  // namespace testing_support
