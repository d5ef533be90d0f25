// HEVC: the sequence parameter set (ITU-T H.265, 7.3.2.2 and 7.3.3).
#include <fmt/format.h>

#include "codecs/BitReader.h"
#include "codecs/StartCodes.h"
#include "codecs/StreamFacts.h"

namespace mkvx {
namespace {

constexpr size_t kMostOfSet = 1024;  // bytes of a parameter set that are looked at

constexpr const char* kChroma[] = {"4:0:0", "4:2:0", "4:2:2", "4:4:4"};

constexpr const char* kProfiles[] = {nullptr,          "Main",
                                     "Main 10",        "Main Still Picture",
                                     "Rext",           "High Throughput",
                                     "Multiview Main", "Scalable Main",
                                     "3D Main",        "Screen-Extended Main",
                                     "Scalable Rext",  "High Throughput Screen-Extended"};

std::string profileName(uint32_t id) {
    const bool isNamed = id < std::size(kProfiles) && kProfiles[id] != nullptr;
    return isNamed ? kProfiles[id] : fmt::format("profile {}", id);
}

void readProfile(BitReader& bits, uint32_t subLayers, StreamFacts& facts) {
    bits.skip(3);  // profile space, tier
    facts.profile = profileName(bits.take(5));
    bits.skip(32 + 48);
    const uint32_t level = bits.take(8);
    facts.level =
        level % 30 == 0 ? fmt::format("{}", level / 30) : fmt::format("{}.{}", level / 30, level % 30 / 3);
    bool hasProfile[8] = {}, hasLevel[8] = {};
    for (uint32_t i = 0; i < subLayers; ++i) {
        hasProfile[i] = bits.flag();
        hasLevel[i] = bits.flag();
    }
    if (subLayers > 0) bits.skip(size_t{2} * (8 - subLayers));
    for (uint32_t i = 0; i < subLayers; ++i) bits.skip((hasProfile[i] ? 88 : 0) + (hasLevel[i] ? 8 : 0));
}

void readPicture(BitReader& bits, StreamFacts& facts) {
    const uint32_t chroma = bits.takeUnsigned();
    if (chroma == 3) bits.skip(1);  // separate_colour_plane_flag
    const uint64_t width = bits.takeUnsigned(), height = bits.takeUnsigned();
    uint64_t cropX = 0, cropY = 0;
    if (bits.flag()) {
        cropX = bits.takeUnsigned();
        cropX = (cropX + bits.takeUnsigned()) * (chroma == 1 || chroma == 2 ? 2 : 1);
        cropY = bits.takeUnsigned();
        cropY = (cropY + bits.takeUnsigned()) * (chroma == 1 ? 2 : 1);
    }
    const uint32_t depth = bits.takeUnsigned() + 8;
    if (bits.isBehindEnd()) return;
    if (chroma < std::size(kChroma)) facts.chroma = kChroma[chroma];
    facts.bitDepth = depth;
    if (cropX >= width || cropY >= height) return;
    facts.width = uint32_t(width - cropX);
    facts.height = uint32_t(height - cropY);
}

StreamFacts factsOfSet(const Bytes& set) {
    BitReader bits(set);
    StreamFacts facts;
    bits.skip(4);
    const uint32_t subLayers = bits.take(3);
    bits.skip(1);
    readProfile(bits, subLayers, facts);
    if (bits.isBehindEnd()) return {};
    bits.takeUnsigned();  // sps_seq_parameter_set_id
    readPicture(bits, facts);
    return facts;
}

}  // namespace

StreamFacts hevcFacts(const Bytes& stream) {
    constexpr uint8_t kSequenceSet = 33;
    StreamFacts facts;
    eachCoded(stream.data(), stream.size(), [&](const uint8_t* unit, size_t size) {
        if (size < 3 || (unit[0] >> 1 & 0x3F) != kSequenceSet) return false;
        facts = factsOfSet(unescaped(unit + 2, size - 2, kMostOfSet));
        return true;
    });
    return facts;
}

}  // namespace mkvx
