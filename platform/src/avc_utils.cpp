#define LOG_TAG "avc_utils"

#include "include/avc_utils.h"

#include <errno.h>
#include <string.h>

#include <media/stagefright/MediaDefs.h>
#include <media/stagefright/MetaData.h>
#include <media/stagefright/foundation/ADebug.h>

#include "BitReader.h"

namespace android {

namespace {

// ISO/IEC 14496-10 table 7-1, as far as it is needed here.
enum NalType : unsigned {
    kNalSlice = 1,
    kNalIdrSlice = 5,
    kNalSequenceParameterSet = 7,
    kNalPictureParameterSet = 8,
};

struct Nal {
    const uint8_t* bytes;
    size_t size;

    unsigned type() const { return bytes[0] & 0x1f; }
    unsigned refIdc() const { return (bytes[0] >> 5) & 3; }
};

// Walks the NAL units of an access unit, its end being the last one's. Empty ones are passed over.
class NalWalk {
  public:
    explicit NalWalk(const sp<ABuffer>& accessUnit) : mData(accessUnit->data()), mSize(accessUnit->size()) {}

    bool next(Nal* nal) {
        // Each round takes at least a start code off the buffer.
        while (getNextNALUnit(&mData, &mSize, &nal->bytes, &nal->size, true) == OK) {
            if (nal->size > 0) return true;
        }
        return false;
    }

  private:
    const uint8_t* mData;
    size_t mSize;
};

bool findNal(const sp<ABuffer>& accessUnit, NalType type, Nal* nal) {
    NalWalk walk(accessUnit);
    while (walk.next(nal)) {
        if (nal->type() == type) return true;
    }
    return false;
}

// The first 00 00 01 in `data`, or `size`.
size_t findStartCode(const uint8_t* data, size_t size) {
    for (size_t i = 0; i + 2 < size; ++i) {
        if (data[i] == 0 && data[i + 1] == 0 && data[i + 2] == 1) return i;
    }
    return size;
}

// ---- Sequence parameter set, ISO/IEC 14496-10, 7.3.2.1.1 ----

bool hasChromaFields(unsigned profile) {
    static const uint8_t kProfiles[] = {100, 110, 122, 244, 44, 83, 86};
    return memchr(kProfiles, static_cast<int>(profile), sizeof(kProfiles)) != nullptr;
}

void skipScalingList(BitReader* bits, int entries) {
    int32_t lastScale = 8;
    int32_t nextScale = 8;
    for (int i = 0; i < entries; ++i) {
        if (nextScale != 0) {
            const uint32_t delta = static_cast<uint32_t>(bits->readSe());
            nextScale = static_cast<int32_t>((static_cast<uint32_t>(lastScale) + delta) & 0xff);
        }
        if (nextScale != 0) lastScale = nextScale;
    }
}

// Gives chroma_format_idc.
uint32_t readChromaFields(BitReader* bits) {
    const uint32_t chromaFormat = bits->readUe();
    if (chromaFormat == 3) bits->skip(1);  // separate_colour_plane_flag
    bits->readUe();                        // bit_depth_luma_minus8
    bits->readUe();                        // bit_depth_chroma_minus8
    bits->skip(1);                         // qpprime_y_zero_transform_bypass_flag
    if (bits->read(1) != 0) {              // seq_scaling_matrix_present_flag
        const int lists = chromaFormat == 3 ? 12 : 8;
        for (int i = 0; i < lists; ++i) {
            if (bits->read(1) != 0) skipScalingList(bits, i < 6 ? 16 : 64);
        }
    }
    return chromaFormat;
}

void skipPictureOrder(BitReader* bits) {
    const uint32_t type = bits->readUe();
    if (type == 0) {
        bits->readUe();  // log2_max_pic_order_cnt_lsb_minus4
    } else if (type == 1) {
        bits->skip(1);   // delta_pic_order_always_zero_flag
        bits->readSe();  // offset_for_non_ref_pic
        bits->readSe();  // offset_for_top_to_bottom_field
        const uint32_t frames = bits->readUe();
        // Bounded by the set's own bits: each offset takes at least one, and reading past the end aborts.
        for (uint32_t i = 0; i < frames; ++i) bits->readSe();
    }
}

struct AspectRatio {
    uint16_t width;
    uint16_t height;
};

// Table E-1, from index 1 on.
const AspectRatio kAspectRatios[] = {
    {1, 1},   {12, 11}, {10, 11}, {16, 11}, {40, 33},  {24, 11}, {20, 11}, {32, 11},
    {80, 33}, {18, 11}, {15, 11}, {64, 33}, {160, 99}, {4, 3},   {3, 2},   {2, 1},
};

// From vui_parameters_present_flag on; 0:0 when there is none.
AspectRatio readAspectRatio(BitReader* bits) {
    if (bits->read(1) == 0) return {0, 0};  // vui_parameters_present_flag
    if (bits->read(1) == 0) return {0, 0};  // aspect_ratio_info_present_flag
    const uint32_t index = bits->read(8);
    if (index == 255) {  // Extended_SAR
        const uint16_t width = static_cast<uint16_t>(bits->read(16));
        const uint16_t height = static_cast<uint16_t>(bits->read(16));
        return {width, height};
    }
    constexpr uint32_t kCount = sizeof(kAspectRatios) / sizeof(kAspectRatios[0]);
    return (index >= 1 && index <= kCount) ? kAspectRatios[index - 1] : AspectRatio{0, 0};
}

struct PictureSize {
    uint32_t width;
    uint32_t height;
};

// From pic_width_in_mbs_minus1 to the cropping. The arithmetic is modulo 2^32: a damaged set gives a wrong
// size.
PictureSize readPictureSize(BitReader* bits, uint32_t chromaFormat) {
    const uint32_t widthInMbs = bits->readUe() + 1;
    const uint32_t heightInMapUnits = bits->readUe() + 1;
    const uint32_t fieldsPerUnit = 2 - bits->read(1);  // frame_mbs_only_flag
    if (fieldsPerUnit == 2) bits->skip(1);             // mb_adaptive_frame_field_flag
    bits->skip(1);                                     // direct_8x8_inference_flag

    PictureSize size = {widthInMbs * 16, fieldsPerUnit * heightInMapUnits * 16};
    if (bits->read(1) != 0) {  // frame_cropping_flag
        const uint32_t left = bits->readUe();
        const uint32_t right = bits->readUe();
        const uint32_t top = bits->readUe();
        const uint32_t bottom = bits->readUe();
        const uint32_t cropX = (chromaFormat == 1 || chromaFormat == 2) ? 2 : 1;
        const uint32_t cropY = (chromaFormat == 1 ? 2 : 1) * fieldsPerUnit;
        size.width -= (left + right) * cropX;
        size.height -= (top + bottom) * cropY;
    }
    return size;
}

// One "count, length, bytes" list of an avcC record that holds one parameter set.
uint8_t* writeParameterSet(uint8_t* out, uint8_t count, const Nal& set) {
    out[0] = count;
    out[1] = static_cast<uint8_t>(set.size >> 8);
    out[2] = static_cast<uint8_t>(set.size);
    memcpy(out + 3, set.bytes, set.size);
    return out + 3 + set.size;
}

// ISO/IEC 14496-15, AVCDecoderConfigurationRecord with NAL unit lengths of 2 bytes.
sp<ABuffer> makeAvcRecord(const Nal& sps, const Nal& pps) {
    CHECK_GE(sps.size, 4u);
    sp<ABuffer> record = new ABuffer(11 + sps.size + pps.size);
    CHECK(record->base() != NULL);
    uint8_t* out = record->data();
    out[0] = 1;                         // configurationVersion
    memcpy(out + 1, sps.bytes + 1, 3);  // profile, compatibility, level
    out[4] = 0xfc | (2 - 1);            // reserved bits, length size less one
    out = writeParameterSet(out + 5, 0xe0 | 1, sps);
    writeParameterSet(out, 1, pps);
    return record;
}

void logConfiguration(const Nal& sps, int32_t width, int32_t height) {
    const unsigned level = sps.bytes[3];
    ALOGI("AVC configuration %d x %d, profile %s, level %u.%u", width, height,
          AVCProfileToString(sps.bytes[1]), level / 10, level % 10);
}

}  // namespace

void FindAVCDimensions(const sp<ABuffer>& seqParamSet, int32_t* width, int32_t* height, int32_t* sarWidth,
                       int32_t* sarHeight) {
    CHECK_GE(seqParamSet->size(), 1u);
    BitReader bits(seqParamSet->data() + 1, seqParamSet->size() - 1);
    const uint32_t profile = bits.read(8);
    bits.skip(16);  // constraint flags, level
    bits.readUe();  // seq_parameter_set_id
    const uint32_t chromaFormat = hasChromaFields(profile) ? readChromaFields(&bits) : 1;
    bits.readUe();  // log2_max_frame_num_minus4
    skipPictureOrder(&bits);
    bits.readUe();  // max_num_ref_frames
    bits.skip(1);   // gaps_in_frame_num_value_allowed_flag
    const PictureSize size = readPictureSize(&bits, chromaFormat);
    *width = static_cast<int32_t>(size.width);
    *height = static_cast<int32_t>(size.height);

    if (sarWidth == NULL && sarHeight == NULL) return;
    const AspectRatio ratio = readAspectRatio(&bits);
    if (sarWidth != NULL) *sarWidth = ratio.width;
    if (sarHeight != NULL) *sarHeight = ratio.height;
}

status_t getNextNALUnit(const uint8_t** data, size_t* size, const uint8_t** nalStart, size_t* nalSize,
                        bool startCodeFollows) {
    *nalStart = NULL;
    *nalSize = 0;
    const uint8_t* const bytes = *data;
    const size_t total = *size;

    const size_t code = findStartCode(bytes, total);
    if (code == total) return -EAGAIN;
    const size_t begin = code + 3;
    const size_t nextCode = begin + findStartCode(bytes + begin, total - begin);
    if (nextCode == total && !startCodeFollows) return -EAGAIN;

    size_t end = nextCode;
    while (end > begin + 1 && bytes[end - 1] == 0) --end;
    *nalStart = bytes + begin;
    *nalSize = end - begin;
    *data = nextCode < total ? bytes + nextCode : NULL;
    *size = total - nextCode;
    return OK;
}

sp<MetaData> MakeAVCCodecSpecificData(const sp<ABuffer>& accessUnit) {
    Nal sps;
    if (!findNal(accessUnit, kNalSequenceParameterSet, &sps)) return NULL;

    int32_t width;
    int32_t height;
    int32_t sarWidth;
    int32_t sarHeight;
    sp<ABuffer> seqParamSet = new ABuffer(const_cast<uint8_t*>(sps.bytes), sps.size);
    FindAVCDimensions(seqParamSet, &width, &height, &sarWidth, &sarHeight);

    Nal pps;
    const uint8_t* picParamSet = findNal(accessUnit, kNalPictureParameterSet, &pps) ? pps.bytes : NULL;
    CHECK(picParamSet != NULL);

    sp<ABuffer> record = makeAvcRecord(sps, pps);
    sp<MetaData> meta = new MetaData;
    meta->setCString(kKeyMIMEType, "video/avc");
    meta->setData(kKeyAVCC, kTypeAVCC, record->data(), record->size());
    meta->setInt32(kKeyWidth, width);
    meta->setInt32(kKeyHeight, height);
    if (sarWidth > 1 || sarHeight > 1) {
        meta->setInt32(kKeySARWidth, sarWidth);
        meta->setInt32(kKeySARHeight, sarHeight);
    }
    logConfiguration(sps, width, height);
    return meta;
}

bool IsIDR(const sp<ABuffer>& accessUnit) {
    Nal slice;
    return findNal(accessUnit, kNalIdrSlice, &slice);
}

bool IsAVCReferenceFrame(const sp<ABuffer>& accessUnit) {
    NalWalk walk(accessUnit);
    Nal nal;
    while (walk.next(&nal)) {
        if (nal.type() == kNalIdrSlice) return true;
        if (nal.type() == kNalSlice) return nal.refIdc() != 0;
    }
    return true;
}

const char* AVCProfileToString(uint8_t profile) {
    switch (profile) {
        case kAVCProfileBaseline:
            return "Baseline";
        case kAVCProfileMain:
            return "Main";
        case kAVCProfileExtended:
            return "Extended";
        case kAVCProfileHigh:
            return "High";
        case kAVCProfileHigh10:
            return "High 10";
        case kAVCProfileHigh422:
            return "High 422";
        case kAVCProfileHigh444:
            return "High 444";
        case kAVCProfileCAVLC444Intra:
            return "CAVLC 444 Intra";
        default:
            return "Unknown";
    }
}

sp<MetaData> MakeAACCodecSpecificData(unsigned profile, unsigned freqIndex, unsigned channels) {
    static const int32_t kSamplingFrequencies[] = {96000, 88200, 64000, 48000, 44100, 32000,
                                                   24000, 22050, 16000, 12000, 11025, 8000};
    CHECK_LE(freqIndex, 11u);

    // AudioSpecificConfig: 5 bits object type, 4 bits frequency index, 4 bits channel configuration, 3 bits
    // 0.
    const unsigned config = ((profile + 1) << 11) | (freqIndex << 7) | (channels << 3);
    const uint8_t esds[] = {
        0x03,
        22,
        0,
        0,
        0,  // ES_Descriptor: ES_ID 0, no flags
        0x04,
        17,
        0x40,
        0x15,  // DecoderConfigDescriptor: MPEG-4 audio, audio stream
        0,
        0,
        0,
        0,
        0,
        0,
        0,
        0,
        0,
        0,
        0,  // buffer size and bit rates unknown
        0x05,
        2,
        static_cast<uint8_t>(config >> 8),
        static_cast<uint8_t>(config),  // DecoderSpecificInfo
    };

    sp<MetaData> meta = new MetaData;
    meta->setCString(kKeyMIMEType, MEDIA_MIMETYPE_AUDIO_AAC);
    meta->setInt32(kKeySampleRate, kSamplingFrequencies[freqIndex]);
    meta->setInt32(kKeyChannelCount, static_cast<int32_t>(channels));
    meta->setData(kKeyESDS, 0, esds, sizeof(esds));
    return meta;
}

}  // namespace android
