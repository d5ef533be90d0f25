#include "utils/CodecTags.h"

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <android/log.h>

#include "utils/MimeTypes.h"
#include "utils/OptionalCodecLibrary.h"

namespace android {
namespace {

struct TagRow {
    uint32_t tag;
    const char* mime;
};

// A FourCC as a number: the first character is the lowest byte.
constexpr uint32_t Tag(const char (&text)[5]) {
    return static_cast<uint32_t>(static_cast<uint8_t>(text[0])) |
           static_cast<uint32_t>(static_cast<uint8_t>(text[1])) << 8 |
           static_cast<uint32_t>(static_cast<uint8_t>(text[2])) << 16 |
           static_cast<uint32_t>(static_cast<uint8_t>(text[3])) << 24;
}

// The tables copy the constants' pointers while the library is loaded. The constants themselves are part of
// its data, so they are there before any table is filled.
const TagRow kFourCcs[] = {
    {Tag(" BID"), MEDIA_MIMETYPE_VIDEO_RAW},       {Tag("H264"), MEDIA_MIMETYPE_VIDEO_AVC},
    {Tag("AVC1"), MEDIA_MIMETYPE_VIDEO_AVC},       {Tag("HVC1"), MEDIA_MIMETYPE_VIDEO_HEVC},
    {Tag("HEV1"), MEDIA_MIMETYPE_VIDEO_HEVC},      {Tag("HEVC"), MEDIA_MIMETYPE_VIDEO_HEVC},
    {Tag("HVCC"), MEDIA_MIMETYPE_VIDEO_HEVC},      {Tag("HM10"), MEDIA_MIMETYPE_VIDEO_HEVC},
    {Tag("WMV1"), MEDIA_MIMETYPE_VIDEO_MIX},       {Tag("WMV2"), MEDIA_MIMETYPE_VIDEO_MIX},
    {Tag("WMV3"), MEDIA_MIMETYPE_VIDEO_WMV},       {Tag("WMVA"), MEDIA_MIMETYPE_VIDEO_WMV},
    {Tag("WVC1"), MEDIA_MIMETYPE_VIDEO_WMV},       {Tag("DIVX"), MEDIA_MIMETYPE_VIDEO_MPEG4},
    {Tag("DX50"), MEDIA_MIMETYPE_VIDEO_FFMPEG},    {Tag("DIV4"), MEDIA_MIMETYPE_VIDEO_MPEG4},
    {Tag("DIV3"), MEDIA_MIMETYPE_VIDEO_MIX},       {Tag("DIV2"), MEDIA_MIMETYPE_VIDEO_MPEG4},
    {Tag("FMP4"), MEDIA_MIMETYPE_VIDEO_MPEG4},     {Tag("MP4V"), MEDIA_MIMETYPE_VIDEO_MPEG4},
    {Tag("H263"), MEDIA_MIMETYPE_VIDEO_H263},      {Tag("XVID"), MEDIA_MIMETYPE_VIDEO_MPEG4},
    {Tag("FLV1"), MEDIA_MIMETYPE_VIDEO_MIX},       {Tag("MP42"), MEDIA_MIMETYPE_VIDEO_MIX},
    {Tag("MP43"), MEDIA_MIMETYPE_VIDEO_MIX},       {Tag("VP62"), MEDIA_MIMETYPE_VIDEO_MIX},
    {Tag("FLV4"), MEDIA_MIMETYPE_VIDEO_MIX},       {Tag("MPEG"), MEDIA_MIMETYPE_VIDEO_MPEG1},
    {Tag("MPG1"), MEDIA_MIMETYPE_VIDEO_MPEG1},     {Tag("MPG2"), MEDIA_MIMETYPE_VIDEO_MPEG2},
    {Tag("RV10"), MEDIA_MIMETYPE_VIDEO_MIX},       {Tag("RV20"), MEDIA_MIMETYPE_VIDEO_MIX},
    {Tag("RV30"), MEDIA_MIMETYPE_VIDEO_MIX},       {Tag("RV40"), MEDIA_MIMETYPE_VIDEO_MIX},
    {Tag("COOK"), MEDIA_MIMETYPE_AUDIO_REALAUDIO}, {Tag("ATRC"), MEDIA_MIMETYPE_AUDIO_REALAUDIO},
    {Tag("SIPR"), MEDIA_MIMETYPE_AUDIO_REALAUDIO}, {Tag("DNET"), MEDIA_MIMETYPE_AUDIO_REALAUDIO},
    {Tag("14_4"), MEDIA_MIMETYPE_AUDIO_REALAUDIO}, {Tag("28_8"), MEDIA_MIMETYPE_AUDIO_REALAUDIO},
    {Tag("RAAC"), MEDIA_MIMETYPE_AUDIO_AAC},       {Tag("RACP"), MEDIA_MIMETYPE_AUDIO_AAC},
    {Tag("VP-8"), MEDIA_MIMETYPE_VIDEO_VP8},       {Tag("VP-9"), MEDIA_MIMETYPE_VIDEO_VP9},
    {Tag("TSCC"), MEDIA_MIMETYPE_VIDEO_FFMPEG},
};

const TagRow kFormatTags[] = {
    {0x55, MEDIA_MIMETYPE_AUDIO_MPEG},     {0x50, MEDIA_MIMETYPE_AUDIO_MPEG},
    {0x161, MEDIA_MIMETYPE_AUDIO_WMA},     {0x162, MEDIA_MIMETYPE_AUDIO_WMA},
    {0x163, MEDIA_MIMETYPE_AUDIO_WMA},     {0xFF, MEDIA_MIMETYPE_AUDIO_AAC},
    {0x2000, MEDIA_MIMETYPE_AUDIO_AC3},    {0x2001, MEDIA_MIMETYPE_AUDIO_DTS},
    {0xA0, MEDIA_MIMETYPE_AUDIO_LPCM},     {0x1, MEDIA_MIMETYPE_AUDIO_RAW},
    {0x2, MEDIA_MIMETYPE_AUDIO_ADPCM},     {0x3, MEDIA_MIMETYPE_AUDIO_LPCM},
    {0x6, MEDIA_MIMETYPE_AUDIO_G711_ALAW}, {0x7, MEDIA_MIMETYPE_AUDIO_G711_MLAW},
    {0x10, MEDIA_MIMETYPE_AUDIO_ADPCM},    {0x11, MEDIA_MIMETYPE_AUDIO_ADPCM},
    {0x20, MEDIA_MIMETYPE_AUDIO_ADPCM},    {0x103, MEDIA_MIMETYPE_AUDIO_ADPCM},
    {0x61, MEDIA_MIMETYPE_AUDIO_ADPCM},    {0x62, MEDIA_MIMETYPE_AUDIO_ADPCM},
    {0x69, MEDIA_MIMETYPE_AUDIO_ADPCM},    {0x200, MEDIA_MIMETYPE_AUDIO_ADPCM},
    {0x5346, MEDIA_MIMETYPE_AUDIO_ADPCM},  {0x5000, MEDIA_MIMETYPE_AUDIO_FLAC},
    {0x5001, MEDIA_MIMETYPE_AUDIO_VORBIS}, {0xF1AC, MEDIA_MIMETYPE_AUDIO_FLAC},
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
