// Why a track is not offered, in words.
#include <fmt/format.h>
#include <algorithm>

#include "base/Text.h"
#include "check/Remedy.h"
#include "check/Tracks.h"
#include "device/ElementIds.h"
#include "device/VorbisHeaders.h"
#include "utils/CodecTags.h"
#include "utils/MimeTypes.h"

namespace mkvx {
namespace {

// What people call the codecs that no device of this kind is offered, and what they are coded to instead.
// Empty: no command does it.
struct CodecName {
    const char* prefix;
    const char* name;
    const char* encoder;
};
constexpr CodecName kCodecNames[] = {
    {"A_OPUS", "Opus", "aac"},
    {"A_EAC3", "E-AC-3", "aac"},
    {"A_TRUEHD", "TrueHD", "aac"},
    {"A_MLP", "MLP", "aac"},
    {"A_MPEG/L1", "MPEG layer I", "aac"},
    {"A_PCM/FLOAT", "floating-point PCM", "flac"},
    {"A_ALAC", "ALAC", "flac"},
    {"A_TTA1", "TTA", "flac"},
    {"A_WAVPACK4", "WavPack", "flac"},
    {"A_AC4", "AC-4", "aac"},
    {"A_QUICKTIME", "QuickTime audio", "aac"},
    {"V_VP8", "VP8", "libx264"},
    {"V_AV1", "AV1", "libx264"},
    {"V_THEORA", "Theora", "libx264"},
    {"V_MJPEG", "Motion JPEG", "libx264"},
    {"V_PRORES", "ProRes", "libx264"},
    {"V_FFV1", "FFV1", "libx264"},
    {"V_DIRAC", "Dirac", "libx264"},
    {"V_UNCOMPRESSED", "uncompressed video", "libx264"},
    {"V_QUICKTIME", "QuickTime video", "libx264"},
    {"S_VOBSUB", "VobSub pictures", ""},
    {"S_HDMV/PGS", "PGS pictures", ""},
    {"S_HDMV/TEXTST", "Blu-ray text", ""},
    {"S_DVBSUB", "DVB pictures", ""},
    {"S_IMAGE/BMP", "bitmap pictures", ""},
    {"S_KATE", "Kate", ""},
    {"S_TEXT/USF", "USF", ""},
    {"S_TEXT/WEBVTT", "WebVTT", ""},
    {"D_WEBVTT", "WebVTT", "srt"},
};

const CodecName* findName(const std::string& codecId) {
    const auto found =
        std::find_if(std::begin(kCodecNames), std::end(kCodecNames), [&](const CodecName& row) {
            return codecId.compare(0, std::string(row.prefix).size(), row.prefix) == 0;
        });
    return found == std::end(kCodecNames) ? nullptr : found;
}

std::string codecText(const JudgedTrack& track) {
    const std::string& codecId = track.verdict->codecId;
    if (codecId.empty()) return "no CodecID";
    const CodecName* name = findName(codecId);
    const std::string shown = printable(codecId);
    return name != nullptr ? fmt::format("{} ({})", shown, name->name) : shown;
}

std::string tagText(uint32_t tag) {
    if (tag <= 0xFFFE) return fmt::format("0x{:04X}", tag);
    const char text[4] = {char(tag), char(tag >> 8), char(tag >> 16), char(tag >> 24)};
    return fmt::format("\"{}\"", printable(std::string(text, 4)));
}

Remedy recode(const std::string& path, const JudgedTrack& track, const char* fallback) {
    const CodecName* name = findName(track.verdict->codecId);
    const std::string encoder = name != nullptr ? name->encoder : fallback;
    if (encoder.empty()) return {};
    return recodeCommand(path, track.verdict->kind[0], track.ordinal, encoder);
}

Finding explainUnmapped(const FileHead& head, const std::string& path, const JudgedTrack& track) {
    const FileTrack& entry = track.entry;
    const bool isVideo = entry.type == kVideoType;
    Finding finding;
    finding.weight = Weight::kLoss;
    finding.remedy = recode(path, track, isVideo ? "libx264" : "aac");
    const bool hasPrivateTag = entry.tagFrom == FileTrack::TagOrigin::kCodecPrivate;
    if (entry.missesRecordOf != 0) {
        finding.code = "private_too_short";
        finding.sentence =
            fmt::format("its CodecPrivate has {} of the {} bytes that {} needs to say what it is",
                        entry.codecPrivate.size(), entry.missesRecordOf, codecText(track));
        finding.evidence = head.evidenceBelowOr(entry.position, {id::kCodecPrivate});
        return finding;
    }
    finding.code = entry.tag == 0 ? "unknown_codec_id" : "unmapped_tag";
    if (entry.tag == 0 && !hasPrivateTag)
        finding.sentence = fmt::format("the plug-in does not know the codec {}", codecText(track));
    else if (hasPrivateTag)
        finding.sentence = fmt::format("the tag {} in its {} header has no MIME type on the device",
                                       tagText(entry.tag), isVideo ? "bitmap" : "wave");
    else
        finding.sentence = fmt::format("the codec {}, tag {}, has no MIME type on the device",
                                       codecText(track), tagText(entry.tag));
    finding.evidence =
        head.evidenceBelowOr(entry.position, {hasPrivateTag ? id::kCodecPrivate : id::kCodecId});
    return finding;
}

Finding explainSubtitle(const FileHead& head, const std::string& path, const JudgedTrack& track) {
    Finding finding;
    finding.code = "subtitle_kind";
    finding.weight = Weight::kLoss;
    finding.sentence = fmt::format(
        "subtitles of the kind {} are not offered, only UTF-8 text, SSA and ASS are", codecText(track));
    finding.evidence = head.evidenceBelowOr(track.entry.position, {id::kCodecId});
    const std::string& codec = track.verdict->codecId;
    if (codec == "S_TEXT/WEBVTT")
        finding.remedy = webvttCommand(path, track.place);
    else if (codec == "S_TEXT/USF" || codec == "S_KATE")
        finding.remedy = "convert the events to SubRip or ASS and mux those";
    else
        finding.remedy = recode(path, track, "");
    if (finding.remedy.empty()) finding.remedy = "turn the pictures into text (OCR) and mux that as SubRip";
    return finding;
}

// AAC without CodecPrivate, for which a configuration would have to be made.
Finding explainAac(const FileHead& head, const std::string& path, const JudgedTrack& track,
                   DropReason reason) {
    Finding finding;
    finding.weight = Weight::kLoss;
    finding.remedy = recodeCommand(path, 'a', track.ordinal, "aac");
    const std::string codec = printable(track.verdict->codecId);
    uint32_t deciding = id::kCodecId;
    switch (reason) {
        case DropReason::kAacNoProfile:
            finding.code = "aac_no_profile";
            finding.sentence =
                fmt::format("there is no CodecPrivate, and {} does not name an AAC profile", codec);
            break;
        case DropReason::kAacFrequency:
            finding.code = "aac_frequency";
            finding.sentence = fmt::format(
                "there is no CodecPrivate, and no configuration can be made for {} Hz, which AAC has no "
                "index for",
                track.entry.samplingFrequency);
            deciding = 0;
            break;
        default:
            finding.code = "aac_profile";
            finding.sentence = fmt::format(
                "there is no CodecPrivate, and no configuration can be made for the profile in {}", codec);
            break;
    }
    finding.evidence = deciding != 0
                           ? head.evidenceBelowOr(track.entry.position, {deciding})
                           : head.evidenceBelowOr(track.entry.position, {id::kAudio, id::kSamplingFrequency});
    return finding;
}

bool isVorbis(const FileTrack& entry) {
    const char* mime = android::GetMimeType(entry.tag);
    return entry.type == kAudioType && mime != nullptr &&
           std::string(mime) == android::MEDIA_MIMETYPE_AUDIO_VORBIS;
}

}  // namespace

Finding explainDrop(const FileHead& head, const std::string& path, const JudgedTrack& track,
                    DropReason reason) {
    Finding finding;
    finding.weight = Weight::kLoss;
    switch (reason) {
        case DropReason::kSubtitleKind:
            return explainSubtitle(head, path, track);
        case DropReason::kUnmappedCodec:
            return explainUnmapped(head, path, track);
        case DropReason::kAacNoProfile:
        case DropReason::kAacFrequency:
        case DropReason::kAacProfile:
            return explainAac(head, path, track, reason);
        case DropReason::kNoParameterSets:
            finding.code = "no_parameter_sets";
            finding.sentence =
                "none of its first 50 blocks begins with the H.264 parameter sets that a configuration is "
                "made from";
            finding.evidence = head.evidenceBelowOr(track.entry.position, {id::kCodecId});
            finding.remedy = copyCommand(path);
            return finding;
        case DropReason::kTrackType:
            break;
    }
    finding.code = "track_type";
    finding.sentence = fmt::format(
        "tracks of type {} are not offered, only video (1), audio (2) and subtitles (17)", track.entry.type);
    finding.evidence = head.evidenceBelowOr(track.entry.position, {id::kTrackType});
    return finding;
}

std::optional<Finding> explainVorbisStop(const FileHead& head, const std::string& path,
                                         const JudgedTrack& track) {
    const FileTrack& entry = track.entry;
    if (!isVorbis(entry)) return std::nullopt;
    const std::optional<VorbisRefusal> refusal = vorbisRefusal(entry.codecPrivate);
    if (!refusal) return std::nullopt;
    Finding finding;
    finding.code = "vorbis_headers";
    finding.weight = Weight::kFatal;
    if (entry.codecPrivate.empty())
        finding.sentence = "there is no CodecPrivate with the Vorbis headers, and the process ends over that";
    else if (refusal->isHeaderLong)
        finding.sentence =
            "a Vorbis header of 255 bytes or more (often the comments) is sound, but the device's contract "
            "ends the "
            "process over it";
    else
        finding.sentence =
            fmt::format("the Vorbis headers are damaged, and the process ends over that: {} does not hold",
                        refusal->condition);
    finding.evidence = head.evidenceBelowOr(entry.position, {id::kCodecPrivate});
    finding.remedy = entry.codecPrivate.empty() ? dropCommand(path, 'a', track.ordinal)  // nobody decodes it
                                                : recodeCommand(path, 'a', track.ordinal, "aac");
    return finding;
}

}  // namespace mkvx
