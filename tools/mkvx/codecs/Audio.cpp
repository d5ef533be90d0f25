// AAC (ISO/IEC 14496-3, 1.6), FLAC (RFC 9639, 8.2) and MPEG audio (ISO/IEC 11172-3, 2.4.1.3).
#include <fmt/format.h>
#include <algorithm>

#include "codecs/BitReader.h"
#include "codecs/StreamFacts.h"
#include "device/AudioConfig.h"

namespace mkvx {
namespace {

// ---- AAC

struct ObjectName {
    uint32_t type;
    const char* name;
};
constexpr ObjectName kObjectTypes[] = {
    {1, "Main"},     {2, "LC"},        {3, "SSR"},     {4, "LTP"},          {5, "HE-AAC"},
    {6, "Scalable"}, {17, "ER LC"},    {19, "ER LTP"}, {20, "ER Scalable"}, {22, "ER BSAC"},
    {23, "LD"},      {29, "HE-AACv2"}, {39, "ELD"},    {42, "xHE-AAC"},
};

std::string objectName(uint32_t type) {
    for (const ObjectName& row : kObjectTypes)
        if (row.type == type) return row.name;
    return fmt::format("object type {}", type);
}

uint32_t takeFrequency(BitReader& bits) {
    constexpr uint32_t kWrittenOut = 15;
    const uint32_t index = bits.take(4);
    if (index == kWrittenOut) return bits.take(24);
    return index < kAacFrequencies.size() ? kAacFrequencies[index] : 0;
}

// Behind an LC configuration stands what decoders that know it add to it, 1.6.5.
void readExtension(BitReader& bits, StreamFacts& facts) {
    constexpr uint32_t kSync = 0x2B7, kParametricSync = 0x548, kSbr = 5;
    constexpr unsigned kGeneral = 3;  // GASpecificConfig without a core coder
    bits.skip(kGeneral);
    if (bits.left() < 17 || bits.take(11) != kSync || bits.take(5) != kSbr || !bits.flag()) return;
    facts.profile = "HE-AAC";
    facts.sampleRate = takeFrequency(bits);
    if (bits.left() >= 12 && bits.take(11) == kParametricSync && bits.flag()) facts.profile = "HE-AACv2";
}

// ---- FLAC

constexpr size_t kStreamInfo = 34, kStreamInfoAt = 8, kWaveFormat = 18;

}  // namespace

StreamFacts aacFacts(const Bytes& audioSpecificConfig) {
    constexpr uint32_t kLc = 2, kSbr = 5, kPs = 29, kEscape = 31, kSevenPlusOne = 7;
    StreamFacts facts;
    BitReader bits(audioSpecificConfig);
    uint32_t type = bits.take(5);
    if (type == kEscape) type = 32 + bits.take(6);
    facts.sampleRate = takeFrequency(bits);
    const uint32_t channels = bits.take(4);
    if (bits.isBehindEnd() || type == 0) return {};
    facts.profile = objectName(type);
    facts.channels = channels == kSevenPlusOne ? 8 : channels < kSevenPlusOne ? channels : 0;
    if (type == kSbr || type == kPs) facts.sampleRate = takeFrequency(bits);
    if (type == kLc && channels != 0) readExtension(bits, facts);
    if (facts.profile == "HE-AACv2") facts.channels = 2;
    return facts;
}

StreamFacts flacFacts(const Bytes& codecPrivate) {
    static const uint8_t kMagic[] = {'f', 'L', 'a', 'C'};
    const bool hasMagic =
        codecPrivate.size() >= 4 && std::equal(std::begin(kMagic), std::end(kMagic), codecPrivate.begin());
    const size_t at = hasMagic ? kStreamInfoAt : kWaveFormat;
    StreamFacts facts;
    if (codecPrivate.size() < at + kStreamInfo) return facts;
    BitReader bits(codecPrivate.data() + at, kStreamInfo);
    bits.skip(16 + 16 + 24 + 24);  // sizes of blocks and frames
    facts.sampleRate = bits.take(20);
    facts.channels = bits.take(3) + 1;
    facts.bitDepth = bits.take(5) + 1;
    return facts;
}

StreamFacts mpegAudioFacts(const uint8_t* frame, size_t size) {
    constexpr uint32_t kRates[] = {44100, 48000, 32000};
    StreamFacts facts;
    BitReader bits(frame, size);
    if (size < 4 || bits.take(11) != 0x7FF) return facts;
    const uint32_t version = bits.take(2), layer = bits.take(2);  // 3: MPEG-1, 2: MPEG-2, 0: MPEG-2.5
    bits.skip(1);
    const uint32_t bitRate = bits.take(4), rate = bits.take(2);
    if (version == 1 || layer == 0 || bitRate == 15 || rate == 3) return facts;
    facts.profile = fmt::format("layer {}", 4 - layer);
    facts.sampleRate = kRates[rate] >> (version == 3 ? 0 : version == 2 ? 1 : 2);
    bits.skip(2);
    facts.channels = bits.take(2) == 3 ? 1 : 2;
    return facts;
}

}  // namespace mkvx
