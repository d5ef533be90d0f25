#include "source/CachedSource.h"

#include <algorithm>
#include <cstring>

namespace mkvx {
namespace {

// Larger ones save hardly a read more where blocks are small; where they are large, a walk from header to
// header would copy the payloads between them.
constexpr size_t kBlockSize = 8 * 1024;
// A file's tracks are read side by side, and what belongs together lies within seconds of each other.
constexpr uint64_t kCapacity = 4 << 20;

uint64_t sizeOf(const android::sp<android::DataSource>& source) {
    off64_t size = 0;
    return source->getSize(&size) == android::OK && size > 0 ? uint64_t(size) : 0;
}

}  // namespace

CachedSource::CachedSource(const android::sp<android::DataSource>& source)
    : mSource(source), mSize(sizeOf(source)), mCache(kBlockSize, kCapacity, BlockCache::Keeps::kBytes) {}

ssize_t CachedSource::readAt(off64_t offset, void* data, size_t size) {
    const bool isInside = offset >= 0 && uint64_t(offset) < mSize;
    if (!isInside || size >= kBlockSize) return mSource->readAt(offset, data, size);
    const size_t available = size_t(std::min<uint64_t>(size, mSize - uint64_t(offset)));
    const std::lock_guard<std::mutex> lock(mMutex);
    if (copy(uint64_t(offset), static_cast<uint8_t*>(data), available)) return ssize_t(available);
    return mSource->readAt(offset, data, size);
}

bool CachedSource::copy(uint64_t offset, uint8_t* out, size_t size) {
    for (size_t done = 0; done < size;) {  // two blocks at most
        const uint64_t at = offset + done;
        const auto held = block(at / kBlockSize);
        if (!held) return false;
        const size_t inBlock = size_t(at % kBlockSize);
        const size_t n = std::min(size - done, held->size - inBlock);
        std::memcpy(out + done, held->bytes + inBlock, n);
        done += n;
    }
    return true;
}

std::optional<BlockCache::Block> CachedSource::block(uint64_t number) {
    std::optional<BlockCache::Block> held = mCache.find(number);
    if (!held) {
        const uint64_t start = number * kBlockSize;
        const size_t whole = size_t(std::min<uint64_t>(kBlockSize, mSize - start));
        const ssize_t got = mSource->readAt(off64_t(start), mCache.begin(number), whole);
        mCache.finish(number, got == ssize_t(whole) ? whole : 0);  // 0: is not tried again
        held = mCache.find(number);
    }
    return held && held->size > 0 ? held : std::nullopt;
}

}  // namespace mkvx
