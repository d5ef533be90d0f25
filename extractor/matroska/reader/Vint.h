// The variable-length integers of EBML (RFC 8794, sections 4 to 6), as pure functions over bytes.
#pragma once

#include <stdint.h>

namespace MatroskaExtReader {

// How many bytes an element ID has by its first byte: 1 to 4, or 0 for a byte that begins no ID.
constexpr unsigned IdLength(uint8_t first) {
    return first >= 0x80 ? 1 : first >= 0x40 ? 2 : first >= 0x20 ? 3 : first >= 0x10 ? 4 : 0;
}

// How many bytes an element size has by its first byte: 1 to 8, or 0 for a byte that begins no size.
constexpr unsigned SizeLength(uint8_t first) {
    return first == 0 ? 0 : static_cast<unsigned>(__builtin_clz(first)) - 23;
}

// The value bits of a size's first byte.
constexpr uint8_t SizeValueBits(uint8_t first, unsigned length) {
    return static_cast<uint8_t>(first & (0xFFu >> length));
}

// All value bits of a size of `length` bytes set: the marker of an unknown size.
constexpr uint64_t UnknownSizeMarker(unsigned length) {
    return (uint64_t{1} << (7 * length)) - 1;
}

// What the signed integers of lacing are biased by (RFC 9559, section 10.3.3).
constexpr uint64_t SignedBias(unsigned length) {
    return UnknownSizeMarker(length) >> 1;
}

// `value` with `count` further bytes appended, most significant first; what is shifted out is lost.
inline uint64_t AppendBigEndian(uint64_t value, const uint8_t* bytes, unsigned count) {
    for (unsigned i = 0; i < count; ++i) value = (value << 8) | bytes[i];
    return value;
}

}  // namespace MatroskaExtReader
