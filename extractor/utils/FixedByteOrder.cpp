#include "utils/FixedByteOrder.h"

namespace android {

uint16_t U16_AT(const unsigned char* data) {
    return static_cast<uint16_t>(data[0] << 8 | data[1]);
}

uint32_t U32_AT(const unsigned char* data) {
    return static_cast<uint32_t>(data[0]) << 24 | static_cast<uint32_t>(data[1]) << 16 |
           static_cast<uint32_t>(data[2]) << 8 | data[3];
}

uint64_t U64_AT(const unsigned char* data) {
    return static_cast<uint64_t>(U32_AT(data)) << 32 | U32_AT(data + 4);
}

uint16_t U16LE_AT(const unsigned char* data) {
    return static_cast<uint16_t>(data[1] << 8 | data[0]);
}

uint32_t U32LE_AT(const unsigned char* data) {
    return static_cast<uint32_t>(data[3]) << 24 | static_cast<uint32_t>(data[2]) << 16 |
           static_cast<uint32_t>(data[1]) << 8 | data[0];
}

uint64_t U64LE_AT(const unsigned char* data) {
    return static_cast<uint64_t>(U32LE_AT(data + 4)) << 32 | U32LE_AT(data);
}

unsigned long long hton64(unsigned long long value) {
    return __builtin_bswap64(value);
}

}  // namespace android
