#include "decoder/Setup.h"

#include <fmt/format.h>
#include <string>

#include "base/Text.h"
#include "device/CodecRecords.h"

namespace mkvx {
namespace {

constexpr uint32_t fourCc(const char (&text)[5]) {
    return uint32_t(uint8_t(text[0])) | uint32_t(uint8_t(text[1])) << 8 | uint32_t(uint8_t(text[2])) << 16 |
           uint32_t(uint8_t(text[3])) << 24;
}

struct TagRow {
    uint32_t tag;
    AVCodecID codec;
};

// FourCCs as bitmap headers name them, in upper case.
const TagRow kVideoTags[] = {
    {fourCc("H263"), AV_CODEC_ID_H263},       {fourCc("XVID"), AV_CODEC_ID_MPEG4},
    {fourCc("DIVX"), AV_CODEC_ID_MPEG4},      {fourCc("DX50"), AV_CODEC_ID_MPEG4},
    {fourCc("FMP4"), AV_CODEC_ID_MPEG4},      {fourCc("MP4V"), AV_CODEC_ID_MPEG4},
    {fourCc("MP42"), AV_CODEC_ID_MSMPEG4V2},  {fourCc("DIV2"), AV_CODEC_ID_MSMPEG4V2},
    {fourCc("MP43"), AV_CODEC_ID_MSMPEG4V3},  {fourCc("DIV3"), AV_CODEC_ID_MSMPEG4V3},
    {fourCc("DIV4"), AV_CODEC_ID_MSMPEG4V3},  {fourCc("WMV1"), AV_CODEC_ID_WMV1},
    {fourCc("WMV2"), AV_CODEC_ID_WMV2},       {fourCc("WMV3"), AV_CODEC_ID_WMV3},
    {fourCc("WMVA"), AV_CODEC_ID_VC1},        {fourCc("WVC1"), AV_CODEC_ID_VC1},
    {fourCc("FLV1"), AV_CODEC_ID_FLV1},       {fourCc("VP62"), AV_CODEC_ID_VP6},
    {fourCc("FLV4"), AV_CODEC_ID_VP6F},       {fourCc("MPEG"), AV_CODEC_ID_MPEG1VIDEO},
    {fourCc("MPG1"), AV_CODEC_ID_MPEG1VIDEO}, {fourCc("MPG2"), AV_CODEC_ID_MPEG2VIDEO},
    {fourCc("RV10"), AV_CODEC_ID_RV10},       {fourCc("RV20"), AV_CODEC_ID_RV20},
    {fourCc("RV30"), AV_CODEC_ID_RV30},       {fourCc("RV40"), AV_CODEC_ID_RV40},
    {fourCc("VP-8"), AV_CODEC_ID_VP8},        {fourCc("VP-9"), AV_CODEC_ID_VP9},
    {fourCc("TSCC"), AV_CODEC_ID_TSCC},
};

// Format tags as wave formats name them. PCM is not here: its codec follows from the sample size.
const TagRow kAudioTags[] = {
    {0x2, AV_CODEC_ID_ADPCM_MS},       {0x6, AV_CODEC_ID_PCM_ALAW},       {0x7, AV_CODEC_ID_PCM_MULAW},
    {0x11, AV_CODEC_ID_ADPCM_IMA_WAV}, {0x20, AV_CODEC_ID_ADPCM_YAMAHA},  {0x50, AV_CODEC_ID_MP2},
    {0x55, AV_CODEC_ID_MP3},           {0x61, AV_CODEC_ID_ADPCM_IMA_DK4}, {0x62, AV_CODEC_ID_ADPCM_IMA_DK3},
    {0x69, AV_CODEC_ID_ADPCM_IMA_WAV}, {0xFF, AV_CODEC_ID_AAC},           {0x161, AV_CODEC_ID_WMAV2},
    {0x162, AV_CODEC_ID_WMAPRO},       {0x163, AV_CODEC_ID_WMALOSSLESS},  {0x200, AV_CODEC_ID_ADPCM_CT},
    {0x2000, AV_CODEC_ID_AC3},         {0x2001, AV_CODEC_ID_DTS},         {0x5346, AV_CODEC_ID_ADPCM_SWF},
    {0xF1AC, AV_CODEC_ID_FLAC},
};
constexpr uint16_t kWavePcm = 1;

template <size_t N>
AVCodecID codecOfTag(const TagRow (&rows)[N], uint32_t tag) {
    for (const TagRow& row : rows)
        if (row.tag == tag) return row.codec;
    return AV_CODEC_ID_NONE;
}

uint32_t upperCase(uint32_t tag) {
    uint32_t upper = 0;
    for (unsigned shift = 0; shift < 32; shift += 8) {
        const uint32_t c = tag >> shift & 0xFF;
        upper |= (c >= 'a' && c <= 'z' ? c - 0x20 : c) << shift;
    }
    return upper;
}

Bytes specificInfoOf(const TrackSetup& format) {
    const Bytes& esds = format.esds;
    const Bytes info = specificInfo(esds);
    if (info.empty() && !esds.empty()) throw DecodeProblem("the ESDS record's sizes do not fit it");
    return info;
}

// RealVideo's configuration is the RealMedia file's description of the stream; the decoder's own part is
// behind its fixed head.
Bytes withoutRealMediaHead(const Bytes& description) {
    constexpr size_t kHead = 26;
    if (description.size() <= kHead) return {};
    return Bytes(description.begin() + kHead, description.end());
}

bool isRealVideo(AVCodecID codec) {
    return codec == AV_CODEC_ID_RV10 || codec == AV_CODEC_ID_RV20 || codec == AV_CODEC_ID_RV30 ||
           codec == AV_CODEC_ID_RV40;
}

// A bitmap header in the configuration names the codec better than the MIME type does, which may stand for
// many. A track that had a bitmap header in the file has a second one behind the one made for it.
bool useBitmapHeader(const Bytes& info, DecoderSetup& setup) {
    auto header = bitmapHeader(info);
    if (!header) return false;
    const AVCodecID codec = codecOfTag(kVideoTags, upperCase(header->compression));
    if (codec == AV_CODEC_ID_NONE) return false;
    if (auto own = bitmapHeader(header->rest); own && own->compression == header->compression) header = own;
    setup.codec = codec;
    setup.tag = header->compression;
    setup.config = isRealVideo(codec) ? withoutRealMediaHead(header->rest) : header->rest;
    return true;
}

void configureFromBytes(const TrackSetup& format, DecoderSetup& setup) {
    const Bytes info = specificInfoOf(format);
    if (!useBitmapHeader(info, setup)) setup.config = info;
}

void configureMpeg4(const TrackSetup& format, DecoderSetup& setup) {
    configureFromBytes(format, setup);
    if (setup.config.empty()) setup.config = format.mpeg4Headers;
}

void configureFromHeader(const TrackSetup& format, DecoderSetup& setup) {
    if (!useBitmapHeader(specificInfoOf(format), setup))
        throw DecodeProblem("no bitmap header in the configuration names the codec");
}

void configureAvc(const TrackSetup& format, DecoderSetup& setup) {
    setup.config = avccParameterSets(format.avcc);
}

void configureHevc(const TrackSetup& format, DecoderSetup& setup) {
    setup.config = hvccParameterSets(format.hvcc);
}

void useWaveFormat(const WaveFormat& wave, DecoderSetup& setup) {
    setup.tag = wave.tag;
    setup.blockAlign = wave.blockAlign;
    setup.bitRate = int64_t{wave.byteRate} * 8;
    setup.bitsPerSample = wave.bitsPerSample;
    setup.config = wave.rest;
}

// For codecs with a MIME type of their own: the configuration may be a wave format of the same codec or the
// codec's own.
void configureAudio(const TrackSetup& format, DecoderSetup& setup) {
    const Bytes info = specificInfoOf(format);
    const auto wave = waveFormat(info);
    if (wave && codecOfTag(kAudioTags, wave->tag) == setup.codec)
        useWaveFormat(*wave, setup);
    else
        setup.config = info;
}

void configureFromWaveFormat(const TrackSetup& format, DecoderSetup& setup) {
    const auto wave = waveFormat(specificInfoOf(format));
    if (!wave) throw DecodeProblem("no wave format in the configuration names the codec");
    setup.codec = codecOfTag(kAudioTags, wave->tag);
    if (setup.codec == AV_CODEC_ID_NONE)
        throw DecodeProblem(fmt::format("no decoder is known for the wave format tag 0x{:X}", wave->tag));
    useWaveFormat(*wave, setup);
}

// The decoder takes every layer.
void configureMpegAudio(const TrackSetup&, DecoderSetup&) {}

void configureVorbis(const TrackSetup& format, DecoderSetup& setup) {
    const Bytes& identification = format.vorbisInfo;
    const Bytes& setupHeader = format.vorbisBooks;
    if (identification.empty() || setupHeader.empty()) throw DecodeProblem("the Vorbis headers are missing");
    setup.config = vorbisHeaders(identification, setupHeader);
}

struct PcmRow {
    int bits;
    AVCodecID littleEndian, bigEndian;
};
const PcmRow kPcm[] = {
    {8, AV_CODEC_ID_PCM_U8, AV_CODEC_ID_PCM_U8},
    {16, AV_CODEC_ID_PCM_S16LE, AV_CODEC_ID_PCM_S16BE},
    {24, AV_CODEC_ID_PCM_S24LE, AV_CODEC_ID_PCM_S24BE},
    {32, AV_CODEC_ID_PCM_S32LE, AV_CODEC_ID_PCM_S32BE},
};

const PcmRow& pcmOf(int bits) {
    for (const PcmRow& row : kPcm)
        if (row.bits == bits) return row;
    throw DecodeProblem(fmt::format("no PCM decoder for samples of {} bits", bits));
}

void configureRaw(const TrackSetup& format, DecoderSetup& setup) {
    const auto wave = waveFormat(specificInfoOf(format));
    setup.bitsPerSample = wave && wave->tag == kWavePcm ? wave->bitsPerSample : 16;
    setup.codec = pcmOf(setup.bitsPerSample).littleEndian;
}

void configureLpcm(const TrackSetup& format, DecoderSetup& setup) {
    setup.bitsPerSample = format.bitsPerSample;
    setup.codec = pcmOf(setup.bitsPerSample).bigEndian;
}

struct MimeRow {
    const char* mime;
    AVCodecID codec;  // NONE: the configuration names it
    void (*configure)(const TrackSetup& format, DecoderSetup& setup);
};

const MimeRow kMimeTypes[] = {
    {"video/avc", AV_CODEC_ID_H264, configureAvc},
    {"video/hevc", AV_CODEC_ID_HEVC, configureHevc},
    {"video/mp4v-es", AV_CODEC_ID_MPEG4, configureMpeg4},
    {"video/mpeg1", AV_CODEC_ID_MPEG1VIDEO, configureFromBytes},
    {"video/mpeg2", AV_CODEC_ID_MPEG2VIDEO, configureFromBytes},
    {"video/x-vnd.on2.vp8", AV_CODEC_ID_VP8, configureFromBytes},
    {"video/x-vnd.on2.vp9", AV_CODEC_ID_VP9, configureFromBytes},
    {"video/3gpp", AV_CODEC_ID_H263, configureFromBytes},
    {"video/mixer", AV_CODEC_ID_NONE, configureFromHeader},
    {"video/wmv", AV_CODEC_ID_NONE, configureFromHeader},
    {"video/ffmpeg", AV_CODEC_ID_NONE, configureFromHeader},
    {"audio/mp4a-latm", AV_CODEC_ID_AAC, configureAudio},
    {"audio/mpeg", AV_CODEC_ID_MP3, configureMpegAudio},
    {"audio/ac3", AV_CODEC_ID_AC3, configureAudio},
    {"audio/dts", AV_CODEC_ID_DTS, configureAudio},
    {"audio/flac", AV_CODEC_ID_FLAC, configureAudio},
    {"audio/vorbis", AV_CODEC_ID_VORBIS, configureVorbis},
    {"audio/raw", AV_CODEC_ID_NONE, configureRaw},
    {"audio/lpcm", AV_CODEC_ID_NONE, configureLpcm},
    {"audio/g711-alaw", AV_CODEC_ID_PCM_ALAW, configureAudio},
    {"audio/g711-mlaw", AV_CODEC_ID_PCM_MULAW, configureAudio},
    {"audio/adpcm", AV_CODEC_ID_NONE, configureFromWaveFormat},
    {"audio/wma", AV_CODEC_ID_NONE, configureFromWaveFormat},
};

const MimeRow& rowOf(const std::string& mime) {
    for (const MimeRow& row : kMimeTypes)
        if (mime == row.mime) return row;
    throw DecodeProblem(fmt::format("no decoder is known for {}", printable(mime)));
}

}  // namespace

DecoderSetup decoderSetup(const TrackSetup& format) {
    const MimeRow& row = rowOf(format.mime);
    DecoderSetup setup;
    setup.codec = row.codec;
    setup.width = format.width;
    setup.height = format.height;
    setup.sampleRate = format.sampleRate;
    setup.channels = format.channels;
    row.configure(format, setup);
    return setup;
}

}  // namespace mkvx
