#include "device/AudioConfig.h"

#include "matroska/AacProbe.h"

namespace mkvx {
namespace {

class BitCursor {
  public:
    explicit BitCursor(const Bytes& bytes) : mBytes(bytes) {}

    uint32_t take(uint32_t count) {
        uint32_t value = 0;
        for (; count > 0; --count, ++mAt) value = value << 1 | bitAt(mAt);
        return value;
    }
    bool isBehindEnd() const { return mAt > mBytes.size() * 8; }

  private:
    uint32_t bitAt(size_t at) const {
        return at / 8 < mBytes.size() ? mBytes[at / 8] >> (7 - at % 8) & 1 : 0;
    }

    const Bytes& mBytes;
    size_t mAt = 0;
};

uint32_t takeObjectType(BitCursor& bits) {
    constexpr uint32_t kEscape = 31;
    const uint32_t type = bits.take(5);
    return type == kEscape ? 32 + bits.take(6) : type;
}

uint32_t takeFrequency(BitCursor& bits) {
    constexpr uint32_t kEscape = 15;
    const uint32_t index = bits.take(4);
    if (index == kEscape) return bits.take(24);
    return index < kAacFrequencies.size() ? kAacFrequencies[index] : 0;
}

}  // namespace

AudioConfig audioConfig(const Bytes& bytes) {
    constexpr uint32_t kSbr = 5, kPs = 29;
    BitCursor bits(bytes);
    AudioConfig config;
    config.objectType = config.coreType = takeObjectType(bits);
    config.frequency = takeFrequency(bits);
    config.channels = bits.take(4);
    if (config.objectType == kSbr || config.objectType == kPs) {
        takeFrequency(bits);  // of what comes out
        config.coreType = takeObjectType(bits);
    }
    config.isCut = bits.isBehindEnd();
    return config;
}

bool isRefusedHere(const Bytes& bytes) {
    return android::AacProbe().Probe(bytes.data(), uint32_t(bytes.size())) ==
           android::AacProbe::Verdict::kUnsupportedFormat;
}

}  // namespace mkvx
