#include "matroska/reader/Pieces.h"

#include <string.h>

#include <algorithm>
#include <new>
#include <utility>

namespace MatroskaExtReader {

constexpr uint32_t Pieces::kHead, Pieces::kLeast, Pieces::kMost, Pieces::kMostFailures;

bool Pieces::Hold(android::DataSource& source, uint64_t position, uint32_t size) {
    const uint32_t kept = std::min(HeldFrom(position), size);
    uint8_t* const room = mFailures < kMostFailures ? Room(size, position, kept) : nullptr;
    mBegin = UINT64_MAX;
    mSize = 0;
    if (room == nullptr) return false;
    const uint32_t wanted = size - kept;
    const off64_t from = static_cast<off64_t>(position + kept);
    if (source.readAt(from, room + kept, wanted) != static_cast<ssize_t>(wanted)) {
        ++mFailures;
        return false;
    }
    mBytes = room;
    mBegin = position;
    mSize = size;
    return true;
}

// Room for `size` bytes, of which the first are the `kept` ones that are held from `position` on.
uint8_t* Pieces::Room(uint32_t size, uint64_t position, uint32_t kept) {
    std::unique_ptr<uint8_t[]> grown;
    if (size > kSmall && size > mRoom) {
        const uint32_t room = size <= kLeast ? kLeast : kMost;
        grown.reset(new (std::nothrow) uint8_t[room]);
        if (grown == nullptr) return nullptr;
        mRoom = room;
    }
    uint8_t* const to = size <= kSmall ? mSmall : grown != nullptr ? grown.get() : mLarge.get();
    if (kept != 0) memmove(to, mBytes + (position - mBegin), kept);
    if (grown != nullptr) mLarge = std::move(grown);
    return to;
}

void Pieces::Forget() {
    mBegin = UINT64_MAX;
    mSize = 0;
    mRoom = 0;
    mLarge.reset();
}

}  // namespace MatroskaExtReader
