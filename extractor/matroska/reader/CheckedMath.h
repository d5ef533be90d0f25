// Arithmetic on numbers that come out of a file. Each name says what happens at the edge of the type.
#pragma once

#include <stdint.h>

namespace MatroskaExtReader {

// The largest position that navigation knows: a source addresses its bytes with signed 64-bit offsets.
constexpr uint64_t kMaxPosition = INT64_MAX;

// a + b, or `limit` where the sum does not fit below it.
constexpr uint64_t AddSaturating(uint64_t a, uint64_t b, uint64_t limit = kMaxPosition) {
    return (a > limit || b > limit - a) ? limit : a + b;
}

// value * factor / divisor in unsigned 64 bits: the product wraps modulo 2^64, the quotient is truncated.
constexpr uint64_t MultiplyWrappingDivide(uint64_t value, uint64_t factor, uint64_t divisor) {
    return value * factor / divisor;
}

// a + b as 64-bit two's complement.
constexpr uint64_t AddWrapping(uint64_t a, uint64_t b) {
    return a + b;
}

// Floating point to unsigned: truncated towards zero; NaN and negatives give 0, what is too large gives the
// maximum.
constexpr uint64_t SaturatingUint64(double value) {
    return !(value > 0.0) ? 0 : value >= 18446744073709551616.0 ? UINT64_MAX : static_cast<uint64_t>(value);
}
constexpr uint32_t SaturatingUint32(double value) {
    return !(value > 0.0) ? 0 : value >= 4294967296.0 ? UINT32_MAX : static_cast<uint32_t>(value);
}
// Floating point to signed: the same, below the signed maximum.
constexpr int32_t SaturatingInt32(double value) {
    return !(value > 0.0) ? 0 : value >= 2147483647.0 ? INT32_MAX : static_cast<int32_t>(value);
}

}  // namespace MatroskaExtReader
