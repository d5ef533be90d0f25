#include "matroska/CodecPrivate.h"

#include <string.h>
#include <strings.h>

#include <android/log.h>
#include <utils/Errors.h>
#include <utils/String8.h>
#include <media/stagefright/MetaData.h>

#include "matroska/FatalCheck.h"
#include "matroska/reader/CheckedMath.h"
#include "utils/FixedByteOrder.h"
#include "utils/TagValues.h"

namespace android {
namespace {

constexpr char kTag[] = "MatroskaExtExtractor";

// AudioSpecificConfig: sampling frequencies by index (ISO/IEC 14496-3, table 1.18).
constexpr uint32_t kFrequencies[] = {96000, 88200, 64000, 48000, 44100, 32000,
                                     24000, 22050, 16000, 12000, 11025, 8000};
constexpr uint32_t kNoFrequency = sizeof(kFrequencies) / sizeof(kFrequencies[0]);

uint32_t FrequencyIndex(uint32_t frequency) {
    uint32_t index = 0;
    while (index < kNoFrequency && kFrequencies[index] != frequency) ++index;
    return index;
}

struct AacProfile {
    const char* codecId;
    uint32_t objectType;
};

constexpr AacProfile kAacProfiles[] = {
    {"A_AAC/MPEG4/LC", 2},     {"A_AAC/MPEG2/LC", 2},  {"A_AAC/MPEG4/LC/SBR", 5},
    {"A_AAC/MPEG2/LC/SBR", 5}, {"A_AAC/MPEG4/LTP", 4},
};

// The object type that a CodecID names, 0 for none.
uint32_t ObjectType(const char* codecId) {
    for (const AacProfile& profile : kAacProfiles) {
        if (strcasecmp(codecId, profile.codecId) == 0) return profile.objectType;
    }
    return 0;
}

void PutU32LE(uint8_t* out, uint32_t value) {
    for (int i = 0; i < 4; ++i) out[i] = static_cast<uint8_t>(value >> (8 * i));
}

// The Vorbis headers' lengths. Deliberate: one lace byte each, also where it is 255 and would go on in Xiph
// lacing: headers of 255 bytes or more are not supported.
struct VorbisLaces {
    size_t identification;
    size_t comment;
    size_t setupOffset() const { return 3 + identification + comment; }
};

VorbisLaces LacesOf(const uint8_t* codecPrivate) {
    return {codecPrivate[1], codecPrivate[2]};
}

// A condition on the headers. The texts are those of the assertions that crash reports show. A
// condition may rely on all those in front of it.
struct VorbisRule {
    const char* condition;
    const char* negated;
    const char* message;
    bool (*holds)(const uint8_t* bytes, size_t size);
};

constexpr uint8_t kIdentificationHeader = 0x01;
constexpr uint8_t kCommentHeader = 0x03;
constexpr uint8_t kSetupHeader = 0x05;

// clang-format off
const VorbisRule kVorbisRules[] = {
    {"codecPrivateSize >= 3", "!(codecPrivateSize >= 3)",
     "frameworks/av/media/libstagefright/corvo/extractor/matroska/MatroskaExtExtractor:911 CHECK(codecPrivateSize >= 3) failed.",
     [](const uint8_t*, size_t size) { return size >= 3; }},
    {"codecPrivate[0] == 0x02", "!(codecPrivate[0] == 0x02)",
     "frameworks/av/media/libstagefright/corvo/extractor/matroska/MatroskaExtExtractor:914 CHECK(codecPrivate[0] == 0x02) failed.",
     [](const uint8_t* bytes, size_t) { return bytes[0] == 0x02; }},
    {"codecPrivateSize > 3 + len1 + len2", "!(codecPrivateSize > 3 + len1 + len2)",
     "frameworks/av/media/libstagefright/corvo/extractor/matroska/MatroskaExtExtractor:919 CHECK(codecPrivateSize > 3 + len1 + len2) failed.",
     [](const uint8_t* bytes, size_t size) { return size > LacesOf(bytes).setupOffset(); }},
    {"codecPrivate[3] == 0x01", "!(codecPrivate[3] == 0x01)",
     "frameworks/av/media/libstagefright/corvo/extractor/matroska/MatroskaExtExtractor:921 CHECK(codecPrivate[3] == 0x01) failed.",
     [](const uint8_t* bytes, size_t) { return bytes[3] == kIdentificationHeader; }},
    {"codecPrivate[len1 + 3] == 0x03", "!(codecPrivate[len1 + 3] == 0x03)",
     "frameworks/av/media/libstagefright/corvo/extractor/matroska/MatroskaExtExtractor:924 CHECK(codecPrivate[len1 + 3] == 0x03) failed.",
     [](const uint8_t* bytes, size_t) { return bytes[LacesOf(bytes).identification + 3] == kCommentHeader; }},
    {"codecPrivate[len1 + len2 + 3] == 0x05", "!(codecPrivate[len1 + len2 + 3] == 0x05)",
     "frameworks/av/media/libstagefright/corvo/extractor/matroska/MatroskaExtExtractor:926 CHECK(codecPrivate[len1 + len2 + 3] == 0x05) failed.",
     [](const uint8_t* bytes, size_t) { return bytes[LacesOf(bytes).setupOffset()] == kSetupHeader; }},
};
// clang-format on

const VorbisRule* FirstBrokenRule(const uint8_t* codecPrivate, size_t size) {
    if (codecPrivate == nullptr) size = 0;
    for (const VorbisRule& rule : kVorbisRules) {
        if (!rule.holds(codecPrivate, size)) return &rule;
    }
    return nullptr;
}

}  // namespace

AacConfigVerdict MakeAacSpecificConfig(const char* codecId, double samplingFrequency, uint32_t channels,
                                       uint8_t out[2]) {
    if (strcasecmp(codecId, "A_AAC") == 0) {
        __android_log_print(ANDROID_LOG_WARN, kTag, "Unspport AAC: No profile");
        return AacConfigVerdict::kNoProfile;
    }
    const uint32_t frequency = FrequencyIndex(MatroskaExtReader::SaturatingUint32(samplingFrequency));
    if (frequency == kNoFrequency) {
        __android_log_print(ANDROID_LOG_ERROR, kTag, "Unsupport AAC freq");
        return AacConfigVerdict::kBadFrequency;
    }
    const uint32_t objectType = ObjectType(codecId);
    if (objectType == 0) {
        __android_log_print(ANDROID_LOG_ERROR, kTag, "Unsupport AAC Codec profile %s", codecId);
        return AacConfigVerdict::kBadProfile;
    }
    // Deliberate: the mask takes a bit out of SBR's object type 5, which is so written as 4, LTP's.
    out[0] = static_cast<uint8_t>(((objectType * 8) & 0xF1) | frequency >> 1);
    out[1] = static_cast<uint8_t>(frequency * 128 | channels * 8);
    __android_log_print(ANDROID_LOG_DEBUG, kTag, "Make codec info 0x%x, 0x%x", out[0], out[1]);
    return AacConfigVerdict::kOk;
}

void WriteBitmapHeader(uint8_t out[kBitmapHeaderSize], uint32_t width, uint32_t height, uint32_t tag) {
    memset(out, 0, kBitmapHeaderSize);
    PutU32LE(out, kBitmapHeaderSize);
    PutU32LE(out + 4, width);
    PutU32LE(out + 8, height);
    PutU32LE(out + 16, tag);  // compression
}

bool NeedsExtraDataStep(const uint8_t* codecPrivate, size_t size) {
    if (codecPrivate == nullptr || size < kBitmapHeaderSize) return false;
    if (U32LE_AT(codecPrivate) < kBitmapHeaderSize) return false;
    switch (U32LE_AT(codecPrivate + 16)) {
        case FourCc("div3"):
        case FourCc("DIV3"):
        case FourCc("div4"):
        case FourCc("DIV4"):
            return false;
        default:
            return true;
    }
}

bool VorbisHeadersAccepted(const uint8_t* codecPrivate, size_t size, const char** failedCondition) {
    const VorbisRule* broken = FirstBrokenRule(codecPrivate, size);
    if (broken != nullptr && failedCondition != nullptr) *failedCondition = broken->condition;
    return broken == nullptr;
}

bool VorbisLacesAreLong(const uint8_t* codecPrivate, size_t size) {
    if (codecPrivate == nullptr || size < 3) return false;
    const VorbisLaces laces = LacesOf(codecPrivate);
    return laces.identification == 255 || laces.comment == 255;
}

void addVorbis2CodecInfo(const sp<MetaData>& meta, const void* codecPrivate, size_t codecPrivateSize) {
    const uint8_t* bytes = static_cast<const uint8_t*>(codecPrivate);
    const VorbisRule* broken = FirstBrokenRule(bytes, codecPrivateSize);
    if (broken != nullptr) FailCheck(broken->negated, broken->message);
    const VorbisLaces laces = LacesOf(bytes);
    meta->setData(kKeyVorbisInfo, 0, bytes + 3, laces.identification);
    meta->setData(kKeyVorbisBooks, 0, bytes + laces.setupOffset(), codecPrivateSize - laces.setupOffset());
}

}  // namespace android
