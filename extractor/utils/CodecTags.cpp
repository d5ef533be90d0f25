#include "utils/CodecTags.h"

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <android/log.h>

#include "utils/MimeTypes.h"
#include "utils/OptionalCodecLibrary.h"
#include "utils/TagValues.h"

namespace android {
namespace {

struct TagRow {
    uint32_t tag;
    const char* mime;
};

// The tables copy the constants' pointers while the library is loaded. The constants themselves are part of
// its data, so they are there before any table is filled.
const TagRow kFourCcs[] = {
    {FourCc(" BID"), MEDIA_MIMETYPE_VIDEO_RAW},       {FourCc("H264"), MEDIA_MIMETYPE_VIDEO_AVC},
    {FourCc("AVC1"), MEDIA_MIMETYPE_VIDEO_AVC},       {FourCc("HVC1"), MEDIA_MIMETYPE_VIDEO_HEVC},
    {FourCc("HEV1"), MEDIA_MIMETYPE_VIDEO_HEVC},      {FourCc("HEVC"), MEDIA_MIMETYPE_VIDEO_HEVC},
    {FourCc("HVCC"), MEDIA_MIMETYPE_VIDEO_HEVC},      {FourCc("HM10"), MEDIA_MIMETYPE_VIDEO_HEVC},
    {FourCc("WMV1"), MEDIA_MIMETYPE_VIDEO_MIX},       {FourCc("WMV2"), MEDIA_MIMETYPE_VIDEO_MIX},
    {FourCc("WMV3"), MEDIA_MIMETYPE_VIDEO_WMV},       {FourCc("WMVA"), MEDIA_MIMETYPE_VIDEO_WMV},
    {FourCc("WVC1"), MEDIA_MIMETYPE_VIDEO_WMV},       {FourCc("DIVX"), MEDIA_MIMETYPE_VIDEO_MPEG4},
    {FourCc("DX50"), MEDIA_MIMETYPE_VIDEO_FFMPEG},    {FourCc("DIV4"), MEDIA_MIMETYPE_VIDEO_MPEG4},
    {FourCc("DIV3"), MEDIA_MIMETYPE_VIDEO_MIX},       {FourCc("DIV2"), MEDIA_MIMETYPE_VIDEO_MPEG4},
    {FourCc("FMP4"), MEDIA_MIMETYPE_VIDEO_MPEG4},     {FourCc("MP4V"), MEDIA_MIMETYPE_VIDEO_MPEG4},
    {FourCc("H263"), MEDIA_MIMETYPE_VIDEO_H263},      {FourCc("XVID"), MEDIA_MIMETYPE_VIDEO_MPEG4},
    {FourCc("FLV1"), MEDIA_MIMETYPE_VIDEO_MIX},       {FourCc("MP42"), MEDIA_MIMETYPE_VIDEO_MIX},
    {FourCc("MP43"), MEDIA_MIMETYPE_VIDEO_MIX},       {FourCc("VP62"), MEDIA_MIMETYPE_VIDEO_MIX},
    {FourCc("FLV4"), MEDIA_MIMETYPE_VIDEO_MIX},       {FourCc("MPEG"), MEDIA_MIMETYPE_VIDEO_MPEG1},
    {FourCc("MPG1"), MEDIA_MIMETYPE_VIDEO_MPEG1},     {FourCc("MPG2"), MEDIA_MIMETYPE_VIDEO_MPEG2},
    {FourCc("RV10"), MEDIA_MIMETYPE_VIDEO_MIX},       {FourCc("RV20"), MEDIA_MIMETYPE_VIDEO_MIX},
    {FourCc("RV30"), MEDIA_MIMETYPE_VIDEO_MIX},       {FourCc("RV40"), MEDIA_MIMETYPE_VIDEO_MIX},
    {FourCc("COOK"), MEDIA_MIMETYPE_AUDIO_REALAUDIO}, {FourCc("ATRC"), MEDIA_MIMETYPE_AUDIO_REALAUDIO},
    {FourCc("SIPR"), MEDIA_MIMETYPE_AUDIO_REALAUDIO}, {FourCc("DNET"), MEDIA_MIMETYPE_AUDIO_REALAUDIO},
    {FourCc("14_4"), MEDIA_MIMETYPE_AUDIO_REALAUDIO}, {FourCc("28_8"), MEDIA_MIMETYPE_AUDIO_REALAUDIO},
    {FourCc("RAAC"), MEDIA_MIMETYPE_AUDIO_AAC},       {FourCc("RACP"), MEDIA_MIMETYPE_AUDIO_AAC},
    {FourCc("VP-8"), MEDIA_MIMETYPE_VIDEO_VP8},       {FourCc("VP-9"), MEDIA_MIMETYPE_VIDEO_VP9},
    {FourCc("TSCC"), MEDIA_MIMETYPE_VIDEO_FFMPEG},
};

const TagRow kFormatTags[] = {
    {format_tag::kMpegLayer3, MEDIA_MIMETYPE_AUDIO_MPEG},
    {format_tag::kMpeg, MEDIA_MIMETYPE_AUDIO_MPEG},
    {0x161, MEDIA_MIMETYPE_AUDIO_WMA},
    {0x162, MEDIA_MIMETYPE_AUDIO_WMA},
    {0x163, MEDIA_MIMETYPE_AUDIO_WMA},
    {format_tag::kAac, MEDIA_MIMETYPE_AUDIO_AAC},
    {format_tag::kAc3, MEDIA_MIMETYPE_AUDIO_AC3},
    {format_tag::kDts, MEDIA_MIMETYPE_AUDIO_DTS},
    {format_tag::kBigEndianPcm, MEDIA_MIMETYPE_AUDIO_LPCM},
    {format_tag::kPcm, MEDIA_MIMETYPE_AUDIO_RAW},
    {0x2, MEDIA_MIMETYPE_AUDIO_ADPCM},
    {0x3, MEDIA_MIMETYPE_AUDIO_LPCM},
    {0x6, MEDIA_MIMETYPE_AUDIO_G711_ALAW},
    {0x7, MEDIA_MIMETYPE_AUDIO_G711_MLAW},
    {0x10, MEDIA_MIMETYPE_AUDIO_ADPCM},
    {0x11, MEDIA_MIMETYPE_AUDIO_ADPCM},
    {0x20, MEDIA_MIMETYPE_AUDIO_ADPCM},
    {0x103, MEDIA_MIMETYPE_AUDIO_ADPCM},
    {0x61, MEDIA_MIMETYPE_AUDIO_ADPCM},
    {0x62, MEDIA_MIMETYPE_AUDIO_ADPCM},
    {0x69, MEDIA_MIMETYPE_AUDIO_ADPCM},
    {0x200, MEDIA_MIMETYPE_AUDIO_ADPCM},
    {0x5346, MEDIA_MIMETYPE_AUDIO_ADPCM},
    {format_tag::kFlac, MEDIA_MIMETYPE_AUDIO_FLAC},
    {format_tag::kVorbis, MEDIA_MIMETYPE_AUDIO_VORBIS},
    {0xF1AC, MEDIA_MIMETYPE_AUDIO_FLAC},
};

// The largest value that counts as a format tag; 0xFFFF, by which WAVEFORMATEX marks a tag in development,
// does not.
constexpr uint32_t kLastFormatTag = 0xFFFE;

template <size_t N>
const char* Find(const TagRow (&rows)[N], uint32_t tag) {
    for (const TagRow& row : rows) {
        if (row.tag == tag) return row.mime;
    }
    return nullptr;
}

uint32_t UpperCase(uint32_t fourcc) {
    uint32_t upper = 0;
    for (int shift = 0; shift < 32; shift += 8) {
        uint32_t c = (fourcc >> shift) & 0xFF;
        if (c >= 'a' && c <= 'z') c -= 0x20;
        upper |= c << shift;
    }
    return upper;
}

}  // namespace

const char* GetMimeType(unsigned int fourcc) {
    __android_log_print(ANDROID_LOG_INFO, "Utils", "%s : fourcc 0x%x", "GetMimeType", fourcc);
    const bool isFourCc = fourcc > kLastFormatTag;
    const uint32_t tag = isFourCc ? UpperCase(fourcc) : fourcc;
    const char* mime = isFourCc ? Find(kFourCcs, tag) : Find(kFormatTags, tag);
    if (mime == nullptr) {
        const char text[4] = {static_cast<char>(tag), static_cast<char>(tag >> 8),
                              static_cast<char>(tag >> 16), static_cast<char>(tag >> 24)};
        __android_log_print(ANDROID_LOG_DEBUG, "Utils", "GetMimeType: not find Mime! 0x%x, %.4s", tag, text);
    }
    return mime;
}

int getCodecIDFromFourCC(unsigned int fourcc) {
    return OptionalCodecLibrary::Installed().codecId(fourcc);
}

bool isNeedExtra(const char* mime) {
    static const char* const kNeedy[] = {"video/mixer", "video/realvideo", "audio/realaudio",
                                         "audio/ape",   "audio/wma",       "audio/adpcm"};
    if (mime == nullptr) return false;
    for (const char* needy : kNeedy) {
        if (strcmp(mime, needy) == 0) return true;
    }
    return false;
}

}  // namespace android
