// The variable-length integers of EBML (RFC 8794, sections 4 to 6), as pure functions over bytes, and the one
// way in which such a number is taken off a source. There `Bytes` offers
//   bool Take(uint8_t* out, unsigned n)   the next n bytes; false when they cannot be had
//   uint64_t LeftInFile() const           bytes from there to the end of the file
#pragma once

#include <stdint.h>
#include <string.h>

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

// The first `count` bytes, 1 to 8, of the eight at `bytes` as one number.
inline uint64_t FirstOfEight(const uint8_t* bytes, unsigned count) {
    uint64_t eight;
    memcpy(&eight, bytes, sizeof(eight));
    return __builtin_bswap64(eight) >> (64 - 8 * count);
}

// The value of the `length` bytes of a size, or of a track number.
inline uint64_t SizeValue(const uint8_t* bytes, unsigned length) {
    return AppendBigEndian(SizeValueBits(bytes[0], length), bytes + 1, length - 1);
}

// Takes a number into `raw`: how many bytes it has, or 0 when its first byte begins none or bytes are
// missing. `behind` further bytes, which are sure to follow it, are taken along, for each question to the
// source costs. `there` bytes of it all are in `raw` already, none or more than `behind`.
template <typename Bytes>
unsigned TakeNumber(unsigned (*lengthOf)(uint8_t), Bytes& bytes, uint8_t* raw, unsigned there,
                    unsigned behind) {
    if (there == 0) {
        there = 1 + behind;
        if (!bytes.Take(raw, there)) return 0;
    }
    const unsigned length = lengthOf(raw[0]);
    if (length + behind > there && !bytes.Take(raw + there, length + behind - there)) return 0;
    return length;
}

struct TakenSize {
    uint64_t value;
    bool isUnknown;
};

// Takes a size, of which `there` bytes are in `raw` already; the result is TakeNumber's. An unknown size is
// what is left of the file.
template <typename Bytes>
unsigned TakeSize(Bytes& bytes, uint8_t* raw, unsigned there, TakenSize* size) {
    const unsigned length = TakeNumber(SizeLength, bytes, raw, there, 0);
    if (length == 0) return 0;
    size->value = SizeValue(raw, length);
    size->isUnknown = size->value == UnknownSizeMarker(length);
    if (size->isUnknown) size->value = bytes.LeftInFile();
    return length;
}

// Takes a size, or with `isSigned` a difference. Deliberate: the bias comes off behind the replacement of an
// unknown size, in that order.
template <typename Bytes>
bool TakeSize(Bytes& bytes, bool isSigned, TakenSize* size) {
    uint8_t raw[8];
    const unsigned length = TakeSize(bytes, raw, 0, size);
    if (length != 0 && isSigned) size->value -= SignedBias(length);
    return length != 0;
}

}  // namespace MatroskaExtReader
