// BitReader: bits from the most significant on, with the Exp-Golomb codes of ISO/IEC 14496-10, 9.1. Reading
// past the end aborts. Does not own the bytes.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace android {

class BitReader {
  public:
    BitReader(const uint8_t* data, size_t size) : mData(data), mBitsLeft(size * 8), mBit(0) {}

    // 0 to 32 bits.
    uint32_t read(unsigned count);
    void skip(unsigned count) { read(count); }
    // Unsigned and signed code; a code of more than 31 leading zeros aborts.
    uint32_t readUe();
    int32_t readSe();

  private:
    const uint8_t* mData;
    size_t mBitsLeft;
    size_t mBit;  // number of the next bit
};

}  // namespace android
