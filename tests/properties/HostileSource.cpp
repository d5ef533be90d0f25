#include "properties/HostileSource.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace testing_support {

namespace {

constexpr uint64_t kNotedBytes = 1 << 20;

// Copies `size` bytes of a run from `at` on; the pattern is shorter than the request, mostly.
void CopyRepeated(const Bytes& pattern, uint64_t at, uint8_t* out, size_t size) {
    size_t from = static_cast<size_t>(at % pattern.size());
    while (size > 0) {
        const size_t step = std::min(size, pattern.size() - from);
        std::memcpy(out, pattern.data() + from, step);
        out += step;
        size -= step;
        from = 0;
    }
}

}  // namespace

uint64_t SizeOf(const Content& content) {
    uint64_t size = 0;
    for (const Stretch& stretch : content) size += stretch.Size();
    return size;
}

HostileSource::HostileSource(Content content) : mStretches(std::move(content)) {
    for (const Stretch& stretch : mStretches) {
        mStarts.push_back(mSize);
        mSize += stretch.Size();
    }
    mVisits.resize(static_cast<size_t>(std::min(mSize, kNotedBytes)) + 1);
}

size_t HostileSource::StretchAt(uint64_t offset) const {
    const auto holds = [&](size_t i) {
        return offset >= mStarts[i] && offset - mStarts[i] < mStretches[i].Size();
    };
    if (!holds(mLast)) {
        const auto behind = std::upper_bound(mStarts.begin(), mStarts.end(), offset);
        mLast = static_cast<size_t>(behind - mStarts.begin()) - 1;
        while (mStretches[mLast].Size() == 0) --mLast;  // an empty stretch shares its start with the next
    }
    return mLast;
}

void HostileSource::Note(off64_t offset) {
    ++mReads;
    const auto at = static_cast<uint64_t>(offset);
    if (at >= mVisits.size() || mVisits[at] == UINT16_MAX) return;
    mMostVisits = std::max<unsigned>(mMostVisits, ++mVisits[at]);
}

ssize_t HostileSource::readAt(off64_t offset, void* data, size_t size) {
    Note(offset);
    if (offset < 0 || static_cast<uint64_t>(offset) >= mSize) return 0;
    const auto begin = static_cast<uint64_t>(offset);
    const auto total = static_cast<size_t>(std::min<uint64_t>(size, mSize - begin));
    auto* out = static_cast<uint8_t*>(data);
    for (size_t done = 0; done < total;) {
        const size_t at = StretchAt(begin + done);
        const uint64_t inRun = begin + done - mStarts[at];
        const auto step =
            static_cast<size_t>(std::min<uint64_t>(total - done, mStretches[at].Size() - inRun));
        CopyRepeated(mStretches[at].bytes, inRun, out + done, step);
        done += step;
    }
    mBytesRead += total;
    return static_cast<ssize_t>(total);
}

android::status_t HostileSource::getSize(off64_t* size) {
    *size = static_cast<off64_t>(mSize);
    return mHidesSize ? android::UNKNOWN_ERROR : android::OK;
}

}  // namespace testing_support
