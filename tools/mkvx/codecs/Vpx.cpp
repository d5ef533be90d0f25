// VP8 (RFC 6386, 9.1) and VP9 (bitstream specification, 6.2 and 7.2): the head of a frame.
#include <fmt/format.h>

#include "codecs/BitReader.h"
#include "codecs/StreamFacts.h"

namespace mkvx {
namespace {

void readColours(BitReader& bits, uint32_t profile, StreamFacts& facts) {
    constexpr uint32_t kRgb = 7;
    const bool isRich = profile == 1 || profile == 3;  // other than 4:2:0
    facts.bitDepth = profile < 2 ? 8 : bits.flag() ? 12 : 10;
    if (bits.take(3) == kRgb) {
        facts.chroma = "4:4:4";
        bits.skip(isRich ? 1 : 0);
        return;
    }
    bits.skip(1);  // range
    facts.chroma = "4:2:0";
    if (!isRich) return;
    const bool isHalfWide = bits.flag(), isHalfHigh = bits.flag();
    facts.chroma = isHalfWide ? (isHalfHigh ? "4:2:0" : "4:2:2") : (isHalfHigh ? "4:4:0" : "4:4:4");
    bits.skip(1);
}

}  // namespace

StreamFacts vp8Facts(const uint8_t* frame, size_t size) {
    constexpr size_t kKeyHead = 10;
    StreamFacts facts;
    if (size < kKeyHead || (frame[0] & 1) != 0) return facts;
    if (frame[3] != 0x9D || frame[4] != 0x01 || frame[5] != 0x2A) return facts;
    facts.profile = fmt::format("{}", frame[0] >> 1 & 7);
    facts.bitDepth = 8;
    facts.chroma = "4:2:0";
    facts.width = (frame[6] | uint32_t(frame[7]) << 8) & 0x3FFF;
    facts.height = (frame[8] | uint32_t(frame[9]) << 8) & 0x3FFF;
    return facts;
}

StreamFacts vp9Facts(const uint8_t* frame, size_t size) {
    constexpr uint32_t kMarker = 2, kSync = 0x498342;
    BitReader bits(frame, size);
    StreamFacts facts;
    if (bits.take(2) != kMarker) return facts;
    const uint32_t low = bits.take(1), profile = bits.take(1) << 1 | low;
    if (profile == 3) bits.skip(1);
    const bool showsOther = bits.flag(), isInter = bits.flag();
    if (showsOther || isInter) return facts;
    bits.skip(2);  // shown, resilient
    if (bits.take(24) != kSync) return facts;
    StreamFacts read;
    read.profile = fmt::format("{}", profile);
    readColours(bits, profile, read);
    read.width = bits.take(16) + 1;
    read.height = bits.take(16) + 1;
    return bits.isBehindEnd() ? facts : read;
}

StreamFacts vp9Features(const Bytes& codecPrivate) {
    constexpr uint8_t kProfile = 1, kLevel = 2, kDepth = 3, kChroma = 4;
    static const char* const kChromaNames[] = {"4:2:0", "4:2:0", "4:2:2", "4:4:4"};
    StreamFacts facts;
    for (size_t at = 0; at + 3 <= codecPrivate.size() && codecPrivate[at + 1] == 1; at += 3) {
        const uint8_t value = codecPrivate[at + 2];
        if (codecPrivate[at] == kProfile) facts.profile = fmt::format("{}", value);
        if (codecPrivate[at] == kLevel)
            facts.level = value % 10 == 0 ? fmt::format("{}", value / 10)
                                          : fmt::format("{}.{}", value / 10, value % 10);
        if (codecPrivate[at] == kDepth) facts.bitDepth = value;
        if (codecPrivate[at] == kChroma && value < std::size(kChromaNames))
            facts.chroma = kChromaNames[value];
    }
    return facts;
}

}  // namespace mkvx
