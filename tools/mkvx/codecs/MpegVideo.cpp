// MPEG-1 and MPEG-2 (ISO/IEC 13818-2, 6.2.2) and MPEG-4 part 2 (ISO/IEC 14496-2, 6.2.2 and 6.2.3).
#include <fmt/format.h>

#include "codecs/BitReader.h"
#include "codecs/StartCodes.h"
#include "codecs/StreamFacts.h"

namespace mkvx {
namespace {

// ---- MPEG-1, MPEG-2

constexpr double kRates[] = {0, 24000 / 1001.0, 24, 25, 30000 / 1001.0, 30, 50, 60000 / 1001.0, 60};

void readSequence(BitReader& bits, StreamFacts& facts) {
    facts.width = bits.take(12);
    facts.height = bits.take(12);
    bits.skip(4);
    const uint32_t rate = bits.take(4);
    if (rate < std::size(kRates)) facts.frameRate = kRates[rate];
    facts.bitDepth = 8;
    facts.chroma = "4:2:0";
}

const char* mpeg2Profile(uint32_t id) {
    switch (id) {
        case 1:
            return "High";
        case 2:
            return "Spatially Scalable";
        case 3:
            return "SNR Scalable";
        case 4:
            return "Main";
        case 5:
            return "Simple";
        default:
            return "4:2:2";
    }
}

const char* mpeg2Level(uint32_t id) {
    switch (id) {
        case 4:
            return "High";
        case 6:
            return "High 1440";
        case 8:
            return "Main";
        case 10:
            return "Low";
        default:
            return "";
    }
}

void readSequenceExtension(BitReader& bits, StreamFacts& facts) {
    static const char* const kChroma[] = {"", "4:2:0", "4:2:2", "4:4:4"};
    constexpr uint32_t kSequenceExtension = 1;
    if (bits.take(4) != kSequenceExtension) return;
    const bool isEscape = bits.flag();
    const uint32_t profile = bits.take(3), level = bits.take(4);
    facts.profile = isEscape && level == 14 ? "Multiview" : isEscape ? "4:2:2" : mpeg2Profile(profile);
    facts.level = isEscape ? (level == 5 ? "Main" : level == 2 ? "High" : "") : mpeg2Level(level);
    bits.skip(1);
    facts.chroma = kChroma[bits.take(2)];
}

// ---- MPEG-4 part 2

struct IndicationRow {
    uint8_t first, last;
    const char* profile;
};
// Table G.1, as far as video of rectangles goes.
constexpr IndicationRow kIndications[] = {
    {0x01, 0x09, "Simple"}, {0x11, 0x12, "Simple Scalable"}, {0x21, 0x22, "Core"},
    {0x32, 0x34, "Main"},   {0x42, 0x42, "N-bit"},           {0xB1, 0xB4, "Advanced Coding Efficiency"},
    {0xE1, 0xE8, "Studio"}, {0xF0, 0xF7, "Advanced Simple"}, {0xF8, 0xFD, "Fine Granularity Scalable"},
};

// 8 and 9 are levels 0 and 0b of Simple, 7 is 3b of Advanced Simple.
std::string levelOf(uint8_t indication) {
    if (indication == 0x08) return "0";
    if (indication == 0x09) return "0b";
    if (indication == 0xF7) return "3b";
    return fmt::format("{}", indication & 0x0F);
}

void readIndication(uint8_t indication, StreamFacts& facts) {
    for (const IndicationRow& row : kIndications) {
        if (indication < row.first || indication > row.last) continue;
        facts.profile = row.profile;
        facts.level = levelOf(indication);
    }
}

// Without the sequence in front of it the object's own type has to do.
void readLayer(BitReader& bits, StreamFacts& facts) {
    constexpr uint32_t kSimple = 1, kAdvancedSimple = 17;
    bits.skip(1);
    const uint32_t type = bits.take(8);
    facts.bitDepth = 8;
    facts.chroma = "4:2:0";
    if (!facts.profile.empty()) return;
    if (type == kSimple) facts.profile = "Simple";
    if (type == kAdvancedSimple) facts.profile = "Advanced Simple";
}

}  // namespace

StreamFacts mpeg2Facts(const Bytes& stream) {
    constexpr uint8_t kSequence = 0xB3, kExtension = 0xB5, kPicture = 0x00;
    StreamFacts facts;
    eachCoded(stream.data(), stream.size(), [&](const uint8_t* coded, size_t size) {
        BitReader bits(coded + 1, size > 0 ? size - 1 : 0);
        if (size >= 8 && coded[0] == kSequence) readSequence(bits, facts);
        if (size >= 7 && coded[0] == kExtension && facts.width != 0) readSequenceExtension(bits, facts);
        return size > 0 && coded[0] == kPicture;
    });
    return facts;
}

StreamFacts mpeg4Facts(const Bytes& stream) {
    constexpr uint8_t kSequence = 0xB0, kLayerFirst = 0x20, kLayerLast = 0x2F;
    StreamFacts facts;
    eachCoded(stream.data(), stream.size(), [&](const uint8_t* coded, size_t size) {
        if (size >= 2 && coded[0] == kSequence) readIndication(coded[1], facts);
        if (size < 4 || coded[0] < kLayerFirst || coded[0] > kLayerLast) return false;
        BitReader bits(coded + 1, size - 1);
        readLayer(bits, facts);
        return true;
    });
    return facts;
}

}  // namespace mkvx
