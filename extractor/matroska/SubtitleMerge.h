// Merging two subtitle events of one SSA/ASS track into one. An event in Matroska is "ReadOrder, Layer,
// Style, Name, MarginL, MarginR, MarginV, Effect, Text": the text follows the eighth comma. Pure functions
// over bytes; embedded NULs are bytes like any other.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

namespace android {

// Position of the eighth comma, or -1 when there are fewer. A comma at position 0 does not count.
ssize_t FindEighthComma(const char* text, size_t size);

// Bytes that MergeEvents writes. `comma` is the position of the last event's eighth comma, below `lastSize`.
size_t MergedSize(size_t newSize, size_t lastSize, size_t comma);

// Writes the new event whole, a line feed, and the last event's text. `out` has room for MergedSize bytes and
// overlaps neither event.
void MergeEvents(uint8_t* out, const uint8_t* newBytes, size_t newSize, const uint8_t* lastBytes,
                 size_t lastSize, size_t comma);

}  // namespace android
