#include "matroska/ElementaryStream.h"

#include <string.h>

namespace android {
namespace {

constexpr uint8_t kSequenceParameterSet = 7;
constexpr uint8_t kPictureParameterSet = 8;

struct Nal {
    const uint8_t* data;
    size_t size;

    uint8_t type() const { return size > 0 ? data[0] & 0x1F : 0; }
};

// Reads bits as the platform's reader of sequence parameter sets does (emulation prevention bytes stay in),
// but remembers an attempt to read past the end where that one aborts. After it no value means anything.
class BitReader {
  public:
    explicit BitReader(const Nal& nal) : mData(nal.data), mBits(uint64_t{nal.size} * 8) {}

    bool whole() const { return mWhole; }

    uint32_t bits(unsigned count) {
        if (count > mBits - mAt) return fail();
        uint32_t value = 0;
        for (; count > 0; --count, ++mAt) value = value << 1 | (mData[mAt / 8] >> (7 - mAt % 8) & 1);
        return value;
    }
    bool flag() { return bits(1) != 0; }

    // Unsigned Exp-Golomb code; one of more than 32 bits after its zeros fits no value.
    uint32_t ue() {
        unsigned zeros = 0;
        while (mWhole && zeros < 32 && !flag()) ++zeros;
        if (zeros == 32) return fail();
        return bits(zeros) + ((1u << zeros) - 1);
    }
    // Signed Exp-Golomb code, modulo 2^32.
    uint32_t se() {
        const uint32_t code = ue();
        return code % 2 != 0 ? code / 2 + 1 : 0u - code / 2;
    }

  private:
    uint32_t fail() {
        mWhole = false;
        return 0;
    }

    const uint8_t* mData;
    uint64_t mBits;
    uint64_t mAt = 0;
    bool mWhole = true;
};

void SkipScalingList(BitReader* in, unsigned entries) {
    uint32_t last = 8;
    for (unsigned i = 0; i < entries; ++i) {
        const uint32_t next = (last + in->se()) & 0xFF;
        if (next == 0) return;  // the rest repeats the last entry
        last = next;
    }
}

bool HasChromaFields(uint32_t profile) {
    switch (profile) {
        case 44:
        case 83:
        case 86:
        case 100:
        case 110:
        case 122:
        case 244:
            return true;
        default:
            return false;
    }
}

void SkipChromaFields(BitReader* in) {
    const uint32_t chromaFormat = in->ue();
    if (chromaFormat == 3) in->bits(1);  // separate planes
    in->ue();                            // bit depths
    in->ue();
    in->bits(1);  // lossless
    if (!in->flag()) return;
    const unsigned lists = chromaFormat == 3 ? 12 : 8;
    for (unsigned i = 0; i < lists; ++i) {
        if (in->flag()) SkipScalingList(in, i < 6 ? 16 : 64);
    }
}

void SkipPictureOrder(BitReader* in) {
    const uint32_t type = in->ue();
    if (type == 0) in->ue();
    if (type != 1) return;
    in->bits(1);
    in->se();
    in->se();
    // At least one bit each, so the set's own length is the bound.
    for (uint32_t cycle = in->ue(); cycle > 0 && in->whole(); --cycle) in->se();
}

// Whether every field up to the sample aspect ratio, the last one that the platform reads, is there.
bool IsWholeSequenceParameterSet(const Nal& nal) {
    BitReader in(nal);
    in.bits(8);  // the NAL header
    const uint32_t profile = in.bits(8);
    in.bits(16);  // constraints, level
    in.ue();      // identifier
    if (HasChromaFields(profile)) SkipChromaFields(&in);
    in.ue();  // frame number length
    SkipPictureOrder(&in);
    in.ue();  // reference frames
    in.bits(1);
    in.ue();  // width and height in macroblocks
    in.ue();
    if (!in.flag()) in.bits(1);  // field coding
    in.bits(1);
    if (in.flag()) {  // cropping
        for (int side = 0; side < 4; ++side) in.ue();
    }
    constexpr uint32_t kExplicitRatio = 255;
    if (in.flag() && in.flag() && in.bits(8) == kExplicitRatio) in.bits(32);
    return in.whole();
}

// Offset of the next 00 00 01, or `size`.
size_t FindStartCode(const uint8_t* data, size_t from, size_t size) {
    for (size_t at = from; at + 3 <= size; ++at) {
        if (data[at] == 0 && data[at + 1] == 0 && data[at + 2] == 1) return at;
    }
    return size;
}

// Cuts the unit that begins at `begin`: up to the next start code, without trailing zeros.
Nal CutNal(const uint8_t* data, size_t begin, size_t end) {
    size_t size = end - begin;
    while (size > 1 && data[begin + size - 1] == 0) --size;
    return {data + begin, size};
}

// Whether the first byte that is not 0 completes a start code.
bool BeginsWithStartCode(const uint8_t* data, size_t size) {
    size_t zeros = 0;
    while (zeros < size && data[zeros] == 0) ++zeros;
    return zeros >= 2 && zeros < size && data[zeros] == 1;
}

}  // namespace

bool StartsWithSequenceParameterSet(const uint8_t* data, size_t size) {
    // Deliberate: no other header byte counts, so a set that is no reference of highest priority (27, 47) is
    // passed over, and so is one behind a three-byte start code.
    static constexpr uint8_t kStart[] = {0, 0, 0, 1, 0x67};
    return data != nullptr && size > 10 && memcmp(data, kStart, sizeof(kStart)) == 0;
}

bool HoldsParameterSets(const uint8_t* data, size_t size) {
    if (data == nullptr || !BeginsWithStartCode(data, size)) return false;
    bool sequence = false;
    bool picture = false;
    size_t startCode = FindStartCode(data, 0, size);
    while (startCode < size) {  // each turn moves past one start code
        const size_t begin = startCode + 3;
        startCode = FindStartCode(data, begin, size);
        const Nal nal = CutNal(data, begin, startCode);
        // The platform takes the first set of each kind.
        if (nal.type() == kSequenceParameterSet && !sequence) {
            if (!IsWholeSequenceParameterSet(nal)) return false;
            sequence = true;
        }
        if (nal.type() == kPictureParameterSet) picture = true;
        if (sequence && picture) return true;
    }
    return false;
}

size_t FindFirstVop(const uint8_t* data, size_t size) {
    constexpr size_t kFarthest = 200;
    static constexpr uint8_t kVopStartCode[] = {0x00, 0x00, 0x01, 0xB6};
    if (data == nullptr || size < sizeof(kVopStartCode)) return 0;
    const size_t end = size - 4 < kFarthest ? size - 4 : kFarthest;
    size_t at = 0;
    while (at < end && memcmp(data + at, kVopStartCode, sizeof(kVopStartCode)) != 0) ++at;
    return at;
}

int ParseA52SyncInfo(const uint8_t* data, size_t size, int* flags, int* sampleRate, int* bitRate) {
    static constexpr uint8_t kHalfRate[12] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 2, 3};
    // Where the low-frequency bit falls in byte 6: behind fields that depend on the channel mode.
    static constexpr uint8_t kLfeMask[8] = {0x10, 0x10, 0x04, 0x04, 0x04, 0x01, 0x04, 0x01};
    static constexpr int kKilobits[19] = {32,  40,  48,  56,  64,  80,  96,  112, 128, 160,
                                          192, 224, 256, 320, 384, 448, 512, 576, 640};
    constexpr int kDolbySurround = 10;
    constexpr int kLowFrequency = 16;

    if (data == nullptr || size < kA52HeaderSize || data[0] != 0x0B || data[1] != 0x77) return 0;
    if (data[5] >= 0x60) return 0;  // a later bit stream version
    const int half = kHalfRate[data[5] >> 3];

    const int mode = data[6] >> 5;
    *flags = (data[6] & 0xF8) == 0x50 ? kDolbySurround : mode;
    if ((data[6] & kLfeMask[mode]) != 0) *flags |= kLowFrequency;

    const int sizeCode = data[4] & 0x3F;
    if (sizeCode > 37) return 0;
    const int kilobits = kKilobits[sizeCode >> 1];
    *bitRate = (kilobits * 1000) >> half;

    switch (data[4] & 0xC0) {
        case 0x00:
            *sampleRate = 48000 >> half;
            return 4 * kilobits;
        case 0x40:
            *sampleRate = 44100 >> half;
            return 2 * (320 * kilobits / 147 + (sizeCode & 1));
        case 0x80:
            *sampleRate = 32000 >> half;
            return 6 * kilobits;
        default:
            return 0;
    }
}

int a52_syncinfo(unsigned char* buf, int* flags, int* sampleRate, int* bitRate) {
    return ParseA52SyncInfo(buf, kA52HeaderSize, flags, sampleRate, bitRate);
}

}  // namespace android
