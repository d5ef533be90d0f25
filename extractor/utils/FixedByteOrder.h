// Unsigned integers of fixed byte order. The pointer needs no alignment; as many bytes are read as the name
// says. The names are those of the platform's own media library, with the same types.
#pragma once

#include <stdint.h>

#pragma GCC visibility push(default)

namespace android {

uint16_t U16_AT(const unsigned char* data);  // big-endian
uint32_t U32_AT(const unsigned char* data);
uint64_t U64_AT(const unsigned char* data);

uint16_t U16LE_AT(const unsigned char* data);  // little-endian
uint32_t U32LE_AT(const unsigned char* data);
uint64_t U64LE_AT(const unsigned char* data);

// The value with its eight bytes reversed, whatever the machine's own order.
unsigned long long hton64(unsigned long long value);

}  // namespace android

#pragma GCC visibility pop
