// Reads bits front to back, the most significant of a byte first. Behind the end they are 0, and
// isBehindEnd() says so. The bytes have to outlive the reader.
#pragma once
#include <cstddef>
#include <cstdint>
#include <vector>

namespace mkvx {

using Bytes = std::vector<uint8_t>;

class BitReader {
  public:
    BitReader(const uint8_t* data, size_t size) : mData(data), mBits(size * 8) {}
    explicit BitReader(const Bytes& bytes) : BitReader(bytes.data(), bytes.size()) {}

    // At most 32.
    uint32_t take(unsigned count) {
        uint32_t value = 0;
        for (; count > 0; --count) value = value << 1 | bit();
        return value;
    }
    bool flag() { return take(1) != 0; }
    void skip(size_t count) { mAt += count; }
    // Exponential Golomb codes, ITU-T H.264, 9.1. A code of more than 32 bits counts as the end.
    uint32_t takeUnsigned() {
        unsigned zeros = 0;
        while (!isBehindEnd() && !flag()) ++zeros;
        if (zeros > 31) mAt = mBits + 1;
        return isBehindEnd() ? 0 : (uint32_t{1} << zeros) - 1 + take(zeros);
    }
    int32_t takeSigned() {
        const uint32_t code = takeUnsigned();
        return code % 2 != 0 ? int32_t(code / 2 + 1) : -int32_t(code / 2);
    }
    size_t left() const { return mAt < mBits ? mBits - mAt : 0; }
    bool isBehindEnd() const { return mAt > mBits; }

  private:
    uint32_t bit() {
        const uint32_t value = mAt < mBits ? mData[mAt / 8] >> (7 - mAt % 8) & 1u : 0;
        ++mAt;
        return value;
    }

    const uint8_t* mData;
    size_t mBits;
    size_t mAt = 0;
};

}  // namespace mkvx
