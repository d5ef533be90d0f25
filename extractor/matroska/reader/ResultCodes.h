// Result codes of the parser. Zero is success, a negative value is a failure; callers test for `< 0`.
//
// The framework side has its own `status_t`; the two styles meet at one line (see MatroskaExtIterator.cpp).
#pragma once

#include <stdint.h>

namespace MatroskaExtReader {

typedef int32_t Result;

constexpr Result kOk = 0;
constexpr Result kFailure =
    static_cast<Result>(0x80004005u);  // short read, bad header, master without children
constexpr Result kNullNode = static_cast<Result>(0x80004003u);     // a null node was passed
constexpr Result kOutOfMemory = static_cast<Result>(0x8007000Eu);  // a refused allocation

constexpr bool Failed(Result result) {
    return result < 0;
}

}  // namespace MatroskaExtReader
