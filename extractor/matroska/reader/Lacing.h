// The lacing header of a block (RFC 9559, section 10.3): several frames in one block, their sizes in front.
//
// A pure function from bytes to sizes. `Bytes` offers what Vint.h asks of it, and
//   uint64_t Position() const   file position of the next byte
// and `add(size)` is called once for each frame, in file order. All sizes are unsigned 64-bit and wrap;
// whether they fit is said by the result.
#pragma once

#include <stdint.h>

#include "matroska/reader/CheckedMath.h"
#include "matroska/reader/Vint.h"

namespace MatroskaExtReader {

enum Lacing : uint32_t { kLacingNone = 0, kLacingXiph = 1, kLacingFixed = 2, kLacingEbml = 3 };

struct LacingResult {
    bool isWhole;  // the header could be read and every frame fits between it and the end of the block
    uint64_t framesPosition;  // of the first frame
};

namespace lacing {

template <typename Bytes>
bool TakeXiphSize(Bytes& bytes, uint64_t end, uint64_t* size) {
    uint8_t byte = 0xFF;
    for (*size = 0; byte == 0xFF; *size += byte) {  // bounded: a size does not reach past the block
        if (bytes.Position() >= end || !bytes.Take(&byte, 1)) return false;
    }
    return true;
}

// Deliberate: the number of frames is an 8-bit number, so that a lace count of 255 means no frame at all.
constexpr uint8_t WrappingFrameCount(uint8_t laceCount) {
    return static_cast<uint8_t>(laceCount + 1);
}

// Deliberate: the differences behind the first size are counted in 8 bits; a lace count of 0 means 255 of
// them.
constexpr uint8_t WrappingDifferenceCount(uint8_t laceCount) {
    return static_cast<uint8_t>(laceCount - 1);
}

template <typename Bytes, typename Add>
bool TakeFixed(uint8_t laceCount, uint64_t end, Bytes& bytes, Add add) {
    const uint8_t frames = WrappingFrameCount(laceCount);
    if (bytes.Position() > end) return false;
    for (unsigned i = 0; i < frames; ++i) add((end - bytes.Position()) / frames);
    return true;
}

template <typename Bytes, typename Add>
bool TakeXiph(uint8_t laceCount, uint64_t end, Bytes& bytes, uint64_t* sum, Add add) {
    uint64_t size;
    for (unsigned i = 0; i < laceCount; ++i) {
        if (!TakeXiphSize(bytes, end, &size)) return false;
        *sum = AddSaturating(*sum, size);
        add(size);
    }
    return true;
}

template <typename Bytes, typename Add>
bool TakeEbml(uint8_t laceCount, Bytes& bytes, uint64_t* sum, Add add) {
    TakenSize first, difference;
    if (!TakeSize(bytes, false, &first)) return false;
    uint64_t size = first.value;
    *sum = AddSaturating(*sum, size);
    add(size);
    for (uint8_t left = WrappingDifferenceCount(laceCount); left != 0; --left) {
        if (!TakeSize(bytes, true, &difference)) return false;
        size = AddWrapping(size, difference.value);
        *sum = AddSaturating(*sum, size);
        add(size);
    }
    return true;
}

// A byte that begins no size is passed over.
template <typename Bytes>
bool PassSize(Bytes& bytes) {
    uint8_t raw[8];
    if (!bytes.Take(raw, 1)) return false;
    const unsigned length = SizeLength(raw[0]);
    return length <= 1 || bytes.Take(raw + 1, length - 1);
}

template <typename Bytes>
bool PassSizes(uint32_t lacing, uint8_t laceCount, uint64_t end, Bytes& bytes) {
    uint64_t size;
    const unsigned differences = WrappingDifferenceCount(laceCount);
    unsigned left = lacing == kLacingXiph ? laceCount : lacing == kLacingEbml ? 1 + differences : 0;
    for (; left != 0; --left) {
        if (!(lacing == kLacingXiph ? TakeXiphSize(bytes, end, &size) : PassSize(bytes))) return false;
    }
    return true;
}

}  // namespace lacing

// `end` is where the block's own element ends. `lacing` must not be kLacingNone.
template <typename Bytes, typename Add>
LacingResult DecodeLacing(uint32_t lacing, uint64_t end, Bytes& bytes, Add add) {
    LacingResult result = {false, bytes.Position()};
    uint8_t laceCount;
    if (bytes.Position() >= end || !bytes.Take(&laceCount, 1)) return result;
    uint64_t sum = 0;
    if (lacing == kLacingFixed) {
        result.isWhole = lacing::TakeFixed(laceCount, end, bytes, add);
        result.framesPosition = bytes.Position();
        return result;
    }
    const bool isRead = lacing == kLacingXiph ? lacing::TakeXiph(laceCount, end, bytes, &sum, add)
                                              : lacing::TakeEbml(laceCount, bytes, &sum, add);
    result.framesPosition = bytes.Position();
    if (!isRead) return result;
    add(end - (result.framesPosition + sum));  // the last size is never stored
    result.isWhole = result.framesPosition <= end && sum <= end - result.framesPosition;
    return result;
}

// For frames that are delivered as one: how many bytes of them stand behind the lacing header, where `bytes`
// stands afterwards. Their sizes are passed over and may be impossible. False when the header cannot be read
// or passes the end of the block.
template <typename Bytes>
bool PassLacing(uint32_t lacing, uint64_t end, Bytes& bytes, uint64_t* framesSize) {
    uint8_t laceCount;
    if (bytes.Position() >= end || !bytes.Take(&laceCount, 1)) return false;
    if (!lacing::PassSizes(lacing, laceCount, end, bytes) || bytes.Position() > end) return false;
    *framesSize = end - bytes.Position();
    if (lacing != kLacingFixed) return true;
    const uint8_t frames = lacing::WrappingFrameCount(laceCount);
    *framesSize = frames == 0 ? 0 : *framesSize / frames * frames;
    return true;
}

}  // namespace MatroskaExtReader
