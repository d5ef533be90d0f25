// What a TrackEntry's codec ID, type, private data and encodings say about its frames: the table of the
// codecs.
#include "matroska/reader/MatroskaElements.h"
#include "utils/FixedByteOrder.h"
#include "utils/TagValues.h"

namespace MatroskaExtReader {

using android::FourCc;
using android::U16LE_AT;
using android::U32LE_AT;
namespace format_tag = android::format_tag;

namespace {

constexpr uint32_t kBitmapHeaderBytes = 40, kWaveFormatBytes = 18;
constexpr uint32_t kShortestAvcRecord = 6;
constexpr uint32_t kVideoBits = 24;
constexpr size_t kRealAudioCode = 7, kRealVideoCode = 9;  // where a RealMedia codec ID names the codec

// ---- what a row of the table may ask beyond the codec ID; false: the row is not for this track after all
// ----------------------------------------------------------------------------------------------------------

bool HasRecord(TrackEntry& track, uint32_t bytes) {
    if (track.CodecPrivate.size() >= bytes) return true;
    track.MissesRecordOf = bytes;
    return false;
}

bool TakeWaveFormat(TrackEntry& track) {
    if (!HasRecord(track, kWaveFormatBytes)) return true;
    const uint8_t* record = track.CodecPrivate.data();
    track.FourCC = U16LE_AT(record);
    track.AvgBytesPerSec = U32LE_AT(record + 8);
    track.BitCount = U16LE_AT(record + 14);
    track.FourCCFrom = TrackEntry::TagOrigin::kCodecPrivate;
    return true;
}

bool TakeBitmapHeader(TrackEntry& track) {
    if (!HasRecord(track, kBitmapHeaderBytes)) return true;
    const uint8_t* record = track.CodecPrivate.data();
    track.BitCount = U16LE_AT(record + 14);
    track.FourCC = U32LE_AT(record + 16);
    track.FourCCFrom = TrackEntry::TagOrigin::kCodecPrivate;
    return true;
}

// Deliberate: an AVC track with too short a record falls through to the MPEG-4 row, an HEVC track to none.
bool HasAvcRecord(TrackEntry& track) {
    return HasRecord(track, kShortestAvcRecord);
}

bool TakeRealAudioCode(TrackEntry& track) {
    if (track.CodecID.TextLength() <= kRealAudioCode + 3) return false;
    track.FourCC = U32LE_AT(track.CodecID.data() + kRealAudioCode);
    return track.IsRealMedia = true;
}

bool TakeRealVideoCode(TrackEntry& track) {
    if (track.CodecID.TextLength() <= kRealVideoCode) return false;
    track.FourCC = FourCc('R', 'V', static_cast<char>(track.CodecID.data()[kRealVideoCode]), '0');
    return track.IsRealMedia = true;
}

bool NoteVorbis(TrackEntry& track) {
    return track.IsVorbis = true;
}

// ---- the table
// ---------------------------------------------------------------------------------------------------

enum class Match { kWhole, kBeginning, kBeginningInAnyCase, kAnywhere };

struct Codec {
    Match match;
    const char* id;
    uint32_t tag;                     // 0: `take` finds it
    bool (*take)(TrackEntry& track);  // null: nothing is asked
};

// The first row that is for the track answers.
const Codec kAudioCodecs[] = {
    {Match::kBeginning, "A_MPEG/L3", format_tag::kMpegLayer3, nullptr},
    {Match::kBeginning, "A_MPEG/L2", format_tag::kMpeg, nullptr},
    {Match::kBeginning, "A_AC3", format_tag::kAc3, nullptr},
    {Match::kBeginning, "A_DTS", format_tag::kDts, nullptr},
    {Match::kBeginning, "A_PCM/INT/LIT", format_tag::kPcm, nullptr},
    {Match::kBeginning, "A_PCM/INT/BIG", format_tag::kBigEndianPcm, nullptr},
    // Muxers have written the longer forms of this one in lower case.
    {Match::kBeginningInAnyCase, "A_AAC", format_tag::kAac, nullptr},
    {Match::kBeginning, "A_MS/ACM", 0, TakeWaveFormat},
    {Match::kBeginning, "A_REAL/", 0, TakeRealAudioCode},
    {Match::kAnywhere, "A_FLAC", format_tag::kFlac, nullptr},
    {Match::kAnywhere, "A_VORBIS", format_tag::kVorbis, NoteVorbis},
};

const Codec kVideoCodecs[] = {
    {Match::kWhole, "V_MS/VFW/FOURCC", 0, TakeBitmapHeader},
    {Match::kBeginning, "V_MPEG4/ISO/AVC", FourCc("AVC1"), HasAvcRecord},
    {Match::kBeginning, "V_MPEGH/ISO/HEVC", FourCc("HEVC"), HasAvcRecord},
    {Match::kBeginning, "V_MPEG4/", FourCc("MP4V"), nullptr},
    {Match::kBeginning, "V_REAL/RV", 0, TakeRealVideoCode},
    {Match::kAnywhere, "V_VP8", FourCc("VPXV"), nullptr},
    {Match::kAnywhere, "V_MPEG1", FourCc("MPG1"), nullptr},
    {Match::kAnywhere, "V_MPEG2", FourCc("MPG2"), nullptr},
    {Match::kAnywhere, "V_VP9", FourCc("VP-9"), nullptr},
};

// `upper` is in upper case.
bool StartsWithInAnyCase(const ByteBuffer& text, const char* upper) {
    for (size_t i = 0; upper[i] != '\0'; ++i) {
        if (i == text.TextLength()) return false;
        const char c = static_cast<char>(text.data()[i]);
        if ((c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c) != upper[i]) return false;
    }
    return true;
}

bool Matches(const ByteBuffer& codecId, const Codec& codec) {
    switch (codec.match) {
        case Match::kWhole:
            return codecId.Equals(codec.id);
        case Match::kBeginning:
            return codecId.StartsWith(codec.id);
        case Match::kBeginningInAnyCase:
            return StartsWithInAnyCase(codecId, codec.id);
        case Match::kAnywhere:
            break;
    }
    return codecId.Contains(codec.id);
}

template <size_t N>
void Describe(TrackEntry& track, const Codec (&codecs)[N]) {
    for (const Codec& codec : codecs) {
        if (!Matches(track.CodecID, codec) || (codec.take != nullptr && !codec.take(track))) continue;
        if (codec.tag != 0) track.FourCC = codec.tag;
        break;
    }
    if (track.FourCC != 0 && track.FourCCFrom == TrackEntry::TagOrigin::kNothing)
        track.FourCCFrom = TrackEntry::TagOrigin::kCodecId;
}

void DescribeAudio(TrackEntry& track) {
    track.BitCount = static_cast<uint32_t>(track.Audio.BitDepth.Get());
    Describe(track, kAudioCodecs);
}

void DescribeVideo(TrackEntry& track) {
    Describe(track, kVideoCodecs);
    if (track.FourCCFrom == TrackEntry::TagOrigin::kCodecId) track.BitCount = kVideoBits;
}

int32_t SubtitleKindOf(const ByteBuffer& codec) {
    static const struct {
        const char* prefix;
        int32_t kind;
    } kKinds[] = {
        {"S_TEXT/UTF8", kSubtitleUtf8}, {"S_TEXT/ASS2", kSubtitleAss2}, {"S_TEXT/ASS", kSubtitleAss},
        {"S_TEXT/SSA", kSubtitleAss},   {"S_VOBSUB", kSubtitleVobSub},  {"S_IMAGE/BMP", kSubtitleBmp},
        {"S_KATE", kSubtitleKate},      {"S_TEXT/USF", kSubtitleUsf},
    };
    for (const auto& row : kKinds) {
        if (codec.StartsWith(row.prefix)) return row.kind;
    }
    return kSubtitleNone;
}

}  // namespace

void TrackEntry::InitInfo() {
    FourCC = BitCount = AvgBytesPerSec = StrippedHeaderBytes = MissesRecordOf = 0;
    FourCCFrom = TagOrigin::kNothing;
    IsRealMedia = IsVorbis = IsZlibCompressed = false;
    SubtitleType = kSubtitleNone;
    switch (TrackType.Get()) {
        case kTrackTypeAudio:
            DescribeAudio(*this);
            break;
        case kTrackTypeVideo:
            DescribeVideo(*this);
            break;
        case kTrackTypeSubtitle:
            SubtitleType = SubtitleKindOf(CodecID);
            break;
        default:
            break;
    }
    for (const AutoPtr<ContentEncoding>& encoding : Encodings) {
        if (encoding->IsZlib()) IsZlibCompressed = true;
        if (encoding->IsHeaderStripping()) {
            StrippedHeaderBytes += encoding->Compression.ContentCompSettings.size();
        }
    }
    // Deliberate: the framework's own stable sort, whose insertions take any comparison, also one that wraps.
    if (!Encodings.isEmpty()) (void)Encodings.sort(ContentEncodingCompare);
}

}  // namespace MatroskaExtReader
