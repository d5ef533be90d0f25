#define LOG_TAG "BitReader"

#include "BitReader.h"

#include <media/stagefright/foundation/ADebug.h>

namespace android {

uint32_t BitReader::read(unsigned count) {
    CHECK_LE(count, 32u);
    CHECK_LE(count, mBitsLeft);
    uint32_t value = 0;
    for (unsigned i = 0; i < count; ++i, ++mBit) {
        value = (value << 1) | ((mData[mBit / 8] >> (7 - mBit % 8)) & 1);
    }
    mBitsLeft -= count;
    return value;
}

uint32_t BitReader::readUe() {
    unsigned zeros = 0;
    while (read(1) == 0) ++zeros;  // ends with the data at the latest
    CHECK_LE(zeros, 31u);
    return ((uint32_t{1} << zeros) - 1) + read(zeros);
}

int32_t BitReader::readSe() {
    const uint32_t code = readUe();
    const int32_t magnitude = static_cast<int32_t>((code >> 1) + (code & 1));
    return (code & 1) != 0 ? magnitude : -magnitude;
}

}  // namespace android
