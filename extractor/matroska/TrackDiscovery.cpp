#define LOG_TAG "MatroskaExtExtractor"
#include "matroska/TrackDiscovery.h"

#include <android/log.h>
#include <string.h>
#include <strings.h>

#include <memory>
#include <new>

#include "matroska/AacProbe.h"
#include "matroska/CodecPrivate.h"
#include "matroska/MatroskaExtIterator.h"
#include "matroska/MetaDataKeys.h"
#include "utils/CodecConfig.h"
#include "utils/CodecTags.h"
#include "utils/MimeTypes.h"

namespace android {

using namespace MatroskaExtReader;

namespace {

// The first `length` bytes with a zero behind them; null where memory is refused.
std::unique_ptr<char[]> CopyOf(const void* text, size_t length) {
    std::unique_ptr<char[]> copy(new (std::nothrow) char[length + 1]());
    if (copy != nullptr && length != 0) memcpy(copy.get(), text, length);
    return copy;
}

// Deliberate: every name and language is handed out without its last byte. Without memory there is none,
// which is a loss.
void SetLanguage(const char* text, const TrackEntry& entry, CMatroskaFile* file, MetaData* meta) {
    const size_t length = strlen(text);
    const std::unique_ptr<char[]> shortened = CopyOf(text, length == 0 ? 0 : length - 1);
    if (shortened == nullptr) {
        file->Losses.Add(LossKind::kRefusedAllocation, entry.Position, length);
        return;
    }
    meta->setCString(kKeyMediaLanguage, shortened.get());
}

bool BeginsWith(const char* text, const char* prefix) {
    return strncmp(text, prefix, strlen(prefix)) == 0;
}

// Deliberate: the name of a track wins over its language. Sets nothing when the track says neither.
void SetNameOrLanguage(const TrackEntry& entry, CMatroskaFile* file, MetaData* meta) {
    const char* const language = entry.Language.c_str();
    const bool hasTwoLetters = strlen(language) > 2;  // once the last byte is gone
    if (entry.Name.c_str()[0] != '\0') {
        SetLanguage(entry.Name.c_str(), entry, file, meta);
    } else if (hasTwoLetters && BeginsWith(language, "ch")) {  // "Simplified Chinese" in Chinese
        meta->setCString(kKeyMediaLanguage, "\xE7\xAE\x80\xE4\xBD\x93\xE4\xB8\xAD\xE6\x96\x87");
    } else if (hasTwoLetters && BeginsWith(language, "en")) {  // "English" in Chinese
        meta->setCString(kKeyMediaLanguage, "\xE8\x8B\xB1\xE6\x96\x87");
    } else if (language[0] != '\0') {
        SetLanguage(language, entry, file, meta);
    }
}

// The low 32 bits; a rate that they make negative is none.
int32_t BitRateOf(uint64_t bitsPerSecond) {
    const int32_t rate = static_cast<int32_t>(bitsPerSecond);
    return rate < 0 ? 0 : rate;
}

// Deliberate: each track of a file gets the whole file's average, where its own rate is not known.
void EstimateBitRate(const CMatroskaFile& file, MetaData* meta) {
    int32_t rate = 0;
    (void)meta->findInt32(kKeyBitRate, &rate);
    if (file.Segment.Tracks.size() != 1 || rate != 0) return;
    const uint64_t duration = file.Segment.GetDuration();
    const uint64_t length = file.HasKnownLength() ? file.Length() : 0;
    const uint64_t estimate = duration == 0 ? 0 : MultiplyWrappingDivide(length, 8000000000u, duration);
    meta->setInt32(kKeyBitRate, BitRateOf(estimate));
}

// Sets 'flag' and 'cdid' when the platform's optional library knows a decoder for the tag.
bool UsePlatformCodec(uint32_t codecTag, MetaData* meta) {
    const int codec = getCodecIDFromFourCC(codecTag);
    if (codec <= 0) return false;
    meta->setInt32(kKeyPlatformFlags, kPlatformFlagFrames);
    meta->setInt32(kKeyPlatformCodec, codec);
    return true;
}

// ---- audio
// -------------------------------------------------------------------------------------------------------

DropReason ConfigureAac(const TrackEntry& entry, const sp<MetaData>& meta) {
    const ByteBuffer& config = entry.CodecPrivate;
    if (config.size() >= 2) {
        AacProbe probe;
        if (probe.Probe(config.data(), config.size()) == AacProbe::Verdict::kUnsupportedFormat) {
            (void)UsePlatformCodec(entry.FourCC, meta.get());
        }
        AddESDSFromSpecificInfo(meta, config.data(), config.size());
        return DropReason::kNone;
    }
    if (config.data() != nullptr) return DropReason::kNone;  // too short to be used, but there

    uint8_t made[2];
    const uint32_t channels = static_cast<uint32_t>(entry.Audio.Channels.Get());
    const std::unique_ptr<char[]> codecId = CopyOf(entry.CodecID.data(), entry.CodecID.TextLength());
    if (codecId == nullptr) return DropReason::kAacNoProfile;
    switch (MakeAacSpecificConfig(codecId.get(), entry.Audio.SamplingFrequency.Get(), channels, made)) {
        case AacConfigVerdict::kNoProfile:
            return DropReason::kAacNoProfile;
        case AacConfigVerdict::kBadFrequency:
            return DropReason::kAacFrequency;
        case AacConfigVerdict::kBadProfile:
            return DropReason::kAacProfile;
        case AacConfigVerdict::kOk:
            break;
    }
    AddESDSFromSpecificInfo(meta, made, sizeof(made));
    return DropReason::kNone;
}

DropReason DescribeAudio(const TrackEntry& entry, const char* mime, const sp<MetaData>& meta) {
    meta->setInt32(kKeySampleRate, SaturatingInt32(entry.Audio.SamplingFrequency.Get()));
    meta->setInt32(kKeyChannelCount, static_cast<int32_t>(entry.Audio.Channels.Get()));
    if (strcasecmp(mime, MEDIA_MIMETYPE_AUDIO_FLAC) == 0) {
        meta->setInt32(kKeyPlatformFlags, kPlatformFlagFrames);
    }
    const ByteBuffer& config = entry.CodecPrivate;
    if (strcmp(mime, MEDIA_MIMETYPE_AUDIO_AAC) == 0) return ConfigureAac(entry, meta);
    if (strcmp(mime, MEDIA_MIMETYPE_AUDIO_VORBIS) == 0) {
        addVorbis2CodecInfo(meta, config.data(), config.size());
    } else if (strcmp(mime, MEDIA_MIMETYPE_AUDIO_LPCM) == 0) {
        meta->setInt32(kKeyBitsPerSample, static_cast<int32_t>(entry.Audio.BitDepth.Get()));
    } else {
        AddESDSFromSpecificInfo(meta, config.data(), config.size());
    }
    return DropReason::kNone;
}

// ---- video
// -------------------------------------------------------------------------------------------------------

// A bitmap header made for the track, and the codec private behind it.
void AddBitmapHeader(const TrackEntry& entry, const sp<MetaData>& meta) {
    const ByteBuffer& config = entry.CodecPrivate;
    const uint64_t size = kBitmapHeaderSize + uint64_t{config.size()};
    const std::unique_ptr<uint8_t[]> record(size > UINT32_MAX ? nullptr : new (std::nothrow) uint8_t[size]);
    if (record == nullptr) return;
    WriteBitmapHeader(record.get(), static_cast<uint32_t>(entry.Video.PixelWidth.Get()),
                      static_cast<uint32_t>(entry.Video.PixelHeight.Get()), entry.FourCC);
    if (!config.empty()) memcpy(record.get() + kBitmapHeaderSize, config.data(), config.size());
    AddESDSFromSpecificInfo(meta, record.get(), static_cast<unsigned int>(size));
}

// Cuts MPEG-4 headers out of the first frame. The codec table leads no track with these codec IDs here, since
// both become "video/mp4v-es"; it stands for a table that does.
void AddMpeg4Headers(CMatroskaFile* file, const TrackEntry& entry, const sp<MetaData>& meta) {
    const ByteBuffer& codecId = entry.CodecID;
    if (!codecId.Equals("V_MPEG4/ISO/ASP") && !codecId.Equals("V_MPEG4/ISO/SP")) return;
    const uint32_t number = static_cast<uint32_t>(entry.TrackNumber.Get());
    MatroskaExtIterator iterator(file, 0, 0, number, nullptr);
    const std::vector<uint8_t> headers = iterator.getMpeg4Headers();
    if (!headers.empty()) meta->setData(kKeyMpeg4Headers, 0, headers.data(), headers.size());
}

// MPEG-4 visual whose CodecPrivate is only a bitmap header: the configuration stands at the start of the
// first frame, which is then delivered without it.
void UseHeadersOfFirstFrame(CMatroskaFile* file, const TrackEntry& entry, DiscoveredTrack* track) {
    MatroskaExtIterator iterator(file, 0, 0, static_cast<uint32_t>(entry.TrackNumber.Get()), nullptr);
    long long position;
    unsigned int size;
    const std::unique_ptr<unsigned char[]> frame(iterator.getM4vExtraInfo(position, size));
    track->mExtraPos = position;
    track->mExtraSize = size;
    if (frame != nullptr) AddESDSFromSpecificInfo(track->mMeta, frame.get(), size);
}

void ConfigureWithoutPrivate(CMatroskaFile* file, const TrackEntry& entry, const char* mime,
                             const sp<MetaData>& meta) {
    if (strcasecmp(mime, MEDIA_MIMETYPE_VIDEO_MPEG4) != 0) {
        AddMpeg4Headers(file, entry, meta);
    } else if (UsePlatformCodec(entry.FourCC, meta.get())) {
        meta->setCString(kKeyMIMEType, MEDIA_MIMETYPE_VIDEO_FFMPEG);
    }
}

DropReason ConfigureAvc(CMatroskaFile* file, const TrackEntry& entry, sp<MetaData>* meta) {
    if (!entry.CodecID.Equals("V_MS/VFW/FOURCC")) {
        (*meta)->setData(kKeyAVCC, 0, entry.CodecPrivate.data(), entry.CodecPrivate.size());
        return DropReason::kNone;
    }
    MatroskaExtIterator iterator(file, 0, 0, static_cast<uint32_t>(entry.TrackNumber.Get()), nullptr);
    *meta = iterator.getH264ExtraInfo();
    return *meta != nullptr ? DropReason::kNone : DropReason::kNoParameterSets;
}

DropReason DescribeVideo(CMatroskaFile* file, const TrackEntry& entry, const char* mime,
                         DiscoveredTrack* track) {
    const sp<MetaData> meta = track->mMeta;
    meta->setInt32(kKeyWidth, static_cast<int32_t>(entry.Video.PixelWidth.Get()));
    meta->setInt32(kKeyHeight, static_cast<int32_t>(entry.Video.PixelHeight.Get()));
    const ByteBuffer& config = entry.CodecPrivate;
    if (strcmp(mime, MEDIA_MIMETYPE_VIDEO_AVC) == 0) return ConfigureAvc(file, entry, &track->mMeta);
    if (strcmp(mime, MEDIA_MIMETYPE_VIDEO_HEVC) == 0) {
        meta->setData(kKeyHVCC, 0, config.data(), config.size());
    } else if (strcmp(mime, MEDIA_MIMETYPE_VIDEO_MPEG1) == 0 ||
               strcmp(mime, MEDIA_MIMETYPE_VIDEO_MPEG2) == 0 || strcmp(mime, MEDIA_MIMETYPE_VIDEO_MIX) == 0) {
        AddBitmapHeader(entry, meta);
    } else if (!config.empty()) {
        AddESDSFromSpecificInfo(meta, config.data(), config.size());
        if (strcmp(mime, MEDIA_MIMETYPE_VIDEO_MPEG4) == 0 && NeedsExtraDataStep(config.data(), config.size()))
            UseHeadersOfFirstFrame(file, entry, track);
    } else {
        ConfigureWithoutPrivate(file, entry, mime, meta);
    }
    return DropReason::kNone;
}

// ---- subtitles
// ---------------------------------------------------------------------------------------------------

DiscoveredTrack DiscoverSubtitle(CMatroskaFile* file, const TrackEntry& entry) {
    DiscoveredTrack track;
    const char* mime = entry.SubtitleType == kSubtitleUtf8   ? MEDIA_MIMETYPE_SUBTITLE_UTF8
                       : entry.SubtitleType == kSubtitleAss  ? MEDIA_MIMETYPE_SUBTITLE_ASS
                       : entry.SubtitleType == kSubtitleAss2 ? MEDIA_MIMETYPE_SUBTITLE_ASS2
                                                             : nullptr;
    if (mime == nullptr) {
        track.mDrop = DropReason::kSubtitleKind;
        return track;
    }
    track.mMeta = new MetaData;
    track.mMeta->setCString(kKeyMIMEType, mime);
    track.mMeta->setInt64(kKeyDuration, DurationUs(*file));
    SetLanguage(entry.Name.c_str(), entry, file, track.mMeta.get());
    return track;
}

DropReason DescribeByType(CMatroskaFile* file, const TrackEntry& entry, const char* mime,
                          DiscoveredTrack* track) {
    switch (entry.TrackType.Get()) {
        case kTrackTypeAudio:
            return DescribeAudio(entry, mime, track->mMeta);
        case kTrackTypeVideo:
            return DescribeVideo(file, entry, mime, track);
        case kTrackTypeSubtitle:  // Deliberate: none comes here, for DiscoverTrack takes them apart before
            track->mCountsAsSubtitle = true;
            return DropReason::kTrackType;
        default:
            return DropReason::kTrackType;
    }
}

}  // namespace

int64_t DurationUs(const CMatroskaFile& file) {
    return static_cast<int64_t>(AddWrapping(file.Segment.GetDuration(), 500) / 1000);
}

DiscoveredTrack DiscoverTrack(CMatroskaFile* file, const TrackEntry& entry) {
    if (entry.TrackType.Get() == kTrackTypeSubtitle) return DiscoverSubtitle(file, entry);
    DiscoveredTrack track;
    const char* mime = GetMimeType(entry.FourCC);
    if (mime == nullptr) {
        const uint64_t type = entry.TrackType.Get();
        const bool isKnownType = type == kTrackTypeVideo || type == kTrackTypeAudio;
        track.mDrop = isKnownType ? DropReason::kUnmappedCodec : DropReason::kTrackType;
        return track;
    }
    __android_log_print(ANDROID_LOG_DEBUG, LOG_TAG, "addTracks(mime): %s", mime);
    track.mMeta = new MetaData;
    track.mMeta->setCString(kKeyMIMEType, mime);
    track.mMeta->setInt32(kKeyBitRate, BitRateOf(uint64_t{entry.AvgBytesPerSec} * 8));
    track.mDrop = DescribeByType(file, entry, mime, &track);
    if (track.mDrop != DropReason::kNone) {
        track.mMeta.clear();
        return track;
    }
    track.mMeta->setInt64(kKeyDuration, DurationUs(*file));
    EstimateBitRate(*file, track.mMeta.get());
    SetNameOrLanguage(entry, file, track.mMeta.get());
    return track;
}

}  // namespace android
