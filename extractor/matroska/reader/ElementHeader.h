// What stands in front of an element's payload (RFC 8794, section 4), and how it is taken off a source of
// bytes (see Vint.h).
#pragma once

#include <stdint.h>

#include "matroska/reader/Vint.h"

namespace MatroskaExtReader {

struct ElementHeader {
    uint32_t id = 0;
    uint64_t size = 0;            // of the payload; what is left of the file where it is unknown
    bool hasUnknownSize = false;  // the size field held the marker of an unknown size
};

// What two bytes did not hold of an ID and size.
template <typename Bytes>
bool TakeLongHeader(Bytes& source, uint8_t (&bytes)[4 + 8], ElementHeader* header) {
    const unsigned idLength = TakeNumber(IdLength, source, bytes, 2, 1);
    TakenSize size;
    if (idLength == 0 || TakeSize(source, bytes + idLength, 1, &size) == 0) return false;
    header->id = static_cast<uint32_t>(AppendBigEndian(0, bytes, idLength));
    header->size = size.value;
    header->hasUnknownSize = size.isUnknown;
    return true;
}

// The next ID and size, in as few requests as can be had without touching a byte behind them: two bytes are
// always there, and what each request brings says how many must follow.
template <typename Bytes>
inline bool TakeHeader(Bytes& source, ElementHeader* header) {
    uint8_t bytes[4 + 8];
    if (!source.Take(bytes, 2)) return false;
    const bool isShort = bytes[0] >= 0x80 && bytes[1] >= 0x80 && bytes[1] != 0xFF;
    if (!isShort) return TakeLongHeader(source, bytes, header);
    header->id = bytes[0];
    header->size = bytes[1] & 0x7Fu;
    header->hasUnknownSize = false;
    return true;
}

}  // namespace MatroskaExtReader
