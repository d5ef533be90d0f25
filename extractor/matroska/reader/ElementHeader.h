// What stands in front of an element's payload (RFC 8794, section 4), and how it is taken off a source of
// bytes (see Vint.h).
#pragma once

#include <stdint.h>

#include "matroska/reader/Pieces.h"
#include "matroska/reader/Vint.h"

namespace MatroskaExtReader {

struct ElementHeader {
    uint32_t id = 0;
    uint64_t size = 0;            // of the payload; what is left of the file where it is unknown
    bool hasUnknownSize = false;  // the size field held the marker of an unknown size
};

constexpr uint32_t kMostHeader = 4 + 8;  // bytes

// The usual header: ID and size in a byte each. False, with nothing told, for any other.
inline bool DecodeShortHeader(const uint8_t* bytes, ElementHeader* header) {
    if (bytes[0] < 0x80 || bytes[1] < 0x80 || bytes[1] == 0xFF) return false;
    header->id = bytes[0];
    header->size = bytes[1] & 0x7Fu;
    header->hasUnknownSize = false;
    return true;
}

// What two bytes did not hold of an ID and size.
template <typename Bytes>
bool TakeLongHeader(Bytes& source, uint8_t (&bytes)[kMostHeader], ElementHeader* header) {
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
    uint8_t bytes[kMostHeader];
    return source.Take(bytes, 2) &&
           (DecodeShortHeader(bytes, header) || TakeLongHeader(source, bytes, header));
}

// The same for kMostHeader bytes, whichever of them the header has.
inline uint32_t TakeLongHeldHeader(const uint8_t* bytes, ElementHeader* header, unsigned* requests) {
    const unsigned idLength = IdLength(bytes[0]);
    const unsigned sizeLength = SizeLength(bytes[idLength]);
    if (idLength == 0 || sizeLength == 0) return 0;
    const uint64_t marker = UnknownSizeMarker(sizeLength);
    header->id = static_cast<uint32_t>(FirstOfEight(bytes, idLength));
    header->size = FirstOfEight(bytes + idLength, sizeLength) & marker;
    header->hasUnknownSize = false;
    *requests += 1 + (idLength > 1) + (sizeLength > 1);
    return header->size != marker ? idLength + sizeLength : 0;
}

// The header of an element of known size that `held` begins with: how many bytes it has, or 0 where that
// takes TakeHeader to tell. Adds the requests of that to `requests`.
inline uint32_t TakeHeldHeader(const HeldBytes& held, ElementHeader* header, unsigned* requests) {
    if (held.size >= 2 && DecodeShortHeader(held.data, header)) {
        ++*requests;
        return 2;
    }
    if (held.size >= kMostHeader) return TakeLongHeldHeader(held.data, header, requests);
    uint8_t bytes[kMostHeader] = {};
    if (held.size != 0) memcpy(bytes, held.data, held.size);
    const uint32_t length = TakeLongHeldHeader(bytes, header, requests);
    return length <= held.size ? length : 0;
}

}  // namespace MatroskaExtReader
