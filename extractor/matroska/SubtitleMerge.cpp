#include "matroska/SubtitleMerge.h"

#include <string.h>

namespace android {

ssize_t FindEighthComma(const char* text, size_t size) {
    // Deliberate: the search begins behind the first byte, so an empty first field makes its comma invisible.
    size_t from = 1;
    for (int commas = 0; commas < 8; ++commas) {
        if (from >= size) return -1;
        const void* hit = memchr(text + from, ',', size - from);
        if (hit == nullptr) return -1;
        from = static_cast<size_t>(static_cast<const char*>(hit) - text) + 1;
    }
    return static_cast<ssize_t>(from - 1);
}

size_t MergedSize(size_t newSize, size_t lastSize, size_t comma) {
    return newSize + lastSize - comma;  // the line feed takes the comma's place
}

void MergeEvents(uint8_t* out, const uint8_t* newBytes, size_t newSize, const uint8_t* lastBytes,
                 size_t lastSize, size_t comma) {
    if (newSize > 0) memcpy(out, newBytes, newSize);
    out[newSize] = '\n';
    memcpy(out + newSize + 1, lastBytes + comma + 1, lastSize - comma - 1);
}

}  // namespace android
