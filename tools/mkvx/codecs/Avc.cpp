// H.264: the sequence parameter set (ITU-T H.264, 7.3.2.1.1 and annex E).
#include <fmt/format.h>

#include "codecs/BitReader.h"
#include "codecs/StartCodes.h"
#include "codecs/StreamFacts.h"

namespace mkvx {
namespace {

constexpr size_t kMostOfSet = 1024;  // bytes of a parameter set that are looked at

constexpr const char* kChroma[] = {"4:0:0", "4:2:0", "4:2:2", "4:4:4"};

struct Profile {
    uint32_t id;
    bool isIntra;  // constraint_set3_flag
    const char* name;
};
constexpr Profile kProfiles[] = {
    {66, false, "Baseline"},
    {77, false, "Main"},
    {88, false, "Extended"},
    {100, false, "High"},
    {110, false, "High 10"},
    {110, true, "High 10 Intra"},
    {122, false, "High 4:2:2"},
    {122, true, "High 4:2:2 Intra"},
    {244, false, "High 4:4:4 Predictive"},
    {244, true, "High 4:4:4 Intra"},
    {44, true, "CAVLC 4:4:4 Intra"},
    {118, false, "Multiview High"},
    {128, false, "Stereo High"},
    {83, false, "Scalable Baseline"},
    {86, false, "Scalable High"},
};

std::string profileName(uint32_t id, uint32_t constraints) {
    const bool isSet1 = (constraints & 0x40) != 0, isSet3 = (constraints & 0x10) != 0;
    if (id == 66 && isSet1) return "Constrained Baseline";
    const char* name = nullptr;
    for (const Profile& profile : kProfiles)
        if (profile.id == id && (name == nullptr || profile.isIntra == isSet3)) name = profile.name;
    return name != nullptr ? name : fmt::format("profile {}", id);
}

std::string levelName(uint32_t profile, uint32_t constraints, uint32_t level) {
    const bool isOld = profile == 66 || profile == 77 || profile == 88;
    if (level == 9 || (level == 11 && isOld && (constraints & 0x10) != 0)) return "1b";
    return level % 10 == 0 ? fmt::format("{}", level / 10) : fmt::format("{}.{}", level / 10, level % 10);
}

bool hasChromaFields(uint32_t profile) {
    for (const uint32_t id : {100, 110, 122, 244, 44, 83, 86, 118, 128, 138, 139, 134, 135})
        if (profile == id) return true;
    return false;
}

void skipScalingList(BitReader& bits, unsigned count) {
    int32_t last = 8, next = 8;
    for (unsigned i = 0; i < count && next != 0; ++i) {
        next = (last + bits.takeSigned() + 256) % 256;
        last = next == 0 ? last : next;
    }
}

void skipScalingMatrix(BitReader& bits, uint32_t chroma) {
    for (unsigned i = 0; i < (chroma == 3 ? 12u : 8u); ++i)
        if (bits.flag()) skipScalingList(bits, i < 6 ? 16 : 64);
}

// Returns chroma_format_idc.
uint32_t readSamples(BitReader& bits, StreamFacts& facts) {
    const uint32_t chroma = bits.takeUnsigned();
    if (chroma < std::size(kChroma)) facts.chroma = kChroma[chroma];
    if (chroma == 3) bits.skip(1);  // separate_colour_plane_flag
    facts.bitDepth = bits.takeUnsigned() + 8;
    bits.takeUnsigned();  // of chroma
    bits.skip(1);
    if (bits.flag()) skipScalingMatrix(bits, chroma);
    return chroma;
}

void skipOrderCount(BitReader& bits) {
    const uint32_t type = bits.takeUnsigned();
    if (type == 0) bits.takeUnsigned();
    if (type != 1) return;
    bits.skip(1);
    bits.takeSigned();
    bits.takeSigned();
    for (uint32_t left = bits.takeUnsigned(); left > 0 && !bits.isBehindEnd(); --left) bits.takeSigned();
}

void readSize(BitReader& bits, uint32_t chroma, StreamFacts& facts) {
    const uint64_t width = (uint64_t{bits.takeUnsigned()} + 1) * 16;
    const uint64_t mapUnits = uint64_t{bits.takeUnsigned()} + 1;
    const bool isFrames = bits.flag();
    if (!isFrames) bits.skip(1);
    bits.skip(1);
    const uint64_t height = mapUnits * 16 * (isFrames ? 1 : 2);
    const uint64_t unitX = chroma == 1 || chroma == 2 ? 2 : 1;
    const uint64_t unitY = uint64_t{chroma == 1 ? 2u : 1u} * (isFrames ? 1 : 2);
    uint64_t cropX = 0, cropY = 0;
    if (bits.flag()) {
        cropX = bits.takeUnsigned();
        cropX = (cropX + bits.takeUnsigned()) * unitX;
        cropY = bits.takeUnsigned();
        cropY = (cropY + bits.takeUnsigned()) * unitY;
    }
    if (bits.isBehindEnd() || cropX >= width || cropY >= height) return;
    facts.width = uint32_t(width - cropX);
    facts.height = uint32_t(height - cropY);
}

// Of the VUI only what stands in front of the timing, and that.
void readTiming(BitReader& bits, StreamFacts& facts) {
    constexpr uint32_t kExtendedAspect = 255;
    if (bits.flag() && bits.take(8) == kExtendedAspect) bits.skip(32);
    if (bits.flag()) bits.skip(1);  // overscan
    if (bits.flag()) {
        bits.skip(4);
        if (bits.flag()) bits.skip(24);  // colours
    }
    if (bits.flag()) {  // place of the chroma samples
        bits.takeUnsigned();
        bits.takeUnsigned();
    }
    if (!bits.flag()) return;
    const uint32_t tick = bits.take(32), scale = bits.take(32);
    if (!bits.isBehindEnd() && tick != 0) facts.frameRate = double(scale) / tick / 2;  // of fields
}

StreamFacts factsOfSet(const Bytes& set) {
    BitReader bits(set);
    StreamFacts facts;
    const uint32_t profile = bits.take(8), constraints = bits.take(8), level = bits.take(8);
    if (bits.isBehindEnd()) return facts;
    facts.profile = profileName(profile, constraints);
    facts.level = levelName(profile, constraints, level);
    bits.takeUnsigned();  // seq_parameter_set_id
    uint32_t chroma = 1;
    facts.chroma = kChroma[chroma];
    facts.bitDepth = 8;
    if (hasChromaFields(profile)) chroma = readSamples(bits, facts);
    bits.takeUnsigned();  // log2_max_frame_num_minus4
    skipOrderCount(bits);
    bits.takeUnsigned();  // max_num_ref_frames
    bits.skip(1);
    readSize(bits, chroma, facts);
    if (bits.flag()) readTiming(bits, facts);
    return facts;
}

}  // namespace

StreamFacts avcFacts(const Bytes& stream) {
    constexpr uint8_t kType = 0x1F, kSequenceSet = 7;
    StreamFacts facts;
    eachCoded(stream.data(), stream.size(), [&](const uint8_t* unit, size_t size) {
        if (size < 4 || (unit[0] & kType) != kSequenceSet) return false;
        facts = factsOfSet(unescaped(unit + 1, size - 1, kMostOfSet));
        return true;
    });
    return facts;
}

}  // namespace mkvx
