// What a TrackEntry's codec ID, type, private data and encodings say about its frames.
#include "matroska/reader/MatroskaElements.h"

namespace MatroskaExtReader {

namespace {

constexpr uint32_t kBitmapHeaderBytes = 40, kWaveFormatBytes = 18;
constexpr uint32_t kShortestAvcRecord = 6;
constexpr uint32_t kVideoBits = 24;
constexpr size_t kRealAudioCode = 7, kRealVideoCode = 9;  // where a RealMedia codec ID names the codec

constexpr uint32_t Code(char a, char b, char c, char d) {
    return static_cast<uint8_t>(a) | static_cast<uint32_t>(static_cast<uint8_t>(b)) << 8 |
           static_cast<uint32_t>(static_cast<uint8_t>(c)) << 16 |
           static_cast<uint32_t>(static_cast<uint8_t>(d)) << 24;
}

uint16_t Little16(const uint8_t* p) {
    return static_cast<uint16_t>(p[0] | p[1] << 8);
}
uint32_t Little32(const uint8_t* p) {
    return Little16(p) | static_cast<uint32_t>(Little16(p + 2)) << 16;
}

// An "A_AAC" prefix in any case: muxers have written the longer forms of this one in lower case.
bool StartsWithAac(const ByteBuffer& codecId) {
    static const char kPrefix[] = "A_AAC";
    if (codecId.TextLength() < sizeof(kPrefix) - 1) return false;
    for (size_t i = 0; i < sizeof(kPrefix) - 1; ++i) {
        const char c = static_cast<char>(codecId.data()[i]);
        const char upper = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
        if (upper != kPrefix[i]) return false;
    }
    return true;
}

void DescribeAudio(TrackEntry& track) {
    const ByteBuffer& codec = track.CodecID;
    const ByteBuffer& config = track.CodecPrivate;
    track.BitCount = static_cast<uint32_t>(track.Audio.BitDepth.Get());
    if (codec.StartsWith("A_MPEG/L3")) {
        track.FourCC = 0x55;
    } else if (codec.StartsWith("A_MPEG/L2")) {
        track.FourCC = 0x50;
    } else if (codec.StartsWith("A_AC3")) {
        track.FourCC = 0x2000;
    } else if (codec.StartsWith("A_DTS")) {
        track.FourCC = 0x2001;
    } else if (codec.StartsWith("A_PCM/INT/LIT")) {
        track.FourCC = 1;
    } else if (codec.StartsWith("A_PCM/INT/BIG")) {
        track.FourCC = 0xA0;
    } else if (StartsWithAac(codec)) {
        track.FourCC = 0xFF;
    } else if (codec.StartsWith("A_MS/ACM")) {
        if (config.size() >= kWaveFormatBytes) {
            track.FourCC = Little16(config.data());
            track.BitCount = Little16(config.data() + 14);
            track.AvgBytesPerSec = Little32(config.data() + 8);
            track.FourCCFrom = TrackEntry::TagOrigin::kCodecPrivate;
        } else {
            track.MissesRecordOf = kWaveFormatBytes;
        }
    } else if (codec.StartsWith("A_REAL/") && codec.TextLength() > kRealAudioCode + 3) {
        track.FourCC = Little32(codec.data() + kRealAudioCode);
        track.IsRealMedia = true;
    } else if (codec.Contains("A_FLAC")) {
        track.FourCC = 0x5000;
    } else if (codec.Contains("A_VORBIS")) {
        track.FourCC = 0x5001;
        track.IsVorbis = true;
    }
}

void DescribeVideo(TrackEntry& track) {
    const ByteBuffer& codec = track.CodecID;
    const ByteBuffer& config = track.CodecPrivate;
    if (codec.Equals("V_MS/VFW/FOURCC")) {
        if (config.size() >= kBitmapHeaderBytes) {
            track.FourCC = Little32(config.data() + 16);
            track.BitCount = Little16(config.data() + 14);
            track.FourCCFrom = TrackEntry::TagOrigin::kCodecPrivate;
        } else {
            track.MissesRecordOf = kBitmapHeaderBytes;
        }
        return;
    }
    // Deliberate: an AVC or HEVC track with too short a record falls through to the MPEG-4 row.
    const bool hasRecord = config.size() >= kShortestAvcRecord;
    const bool wantsRecord = codec.StartsWith("V_MPEG4/ISO/AVC") || codec.StartsWith("V_MPEGH/ISO/HEVC");
    if (wantsRecord && !hasRecord) track.MissesRecordOf = kShortestAvcRecord;
    if (codec.StartsWith("V_MPEG4/ISO/AVC") && hasRecord) {
        track.FourCC = Code('A', 'V', 'C', '1');
    } else if (codec.StartsWith("V_MPEGH/ISO/HEVC") && hasRecord) {
        track.FourCC = Code('H', 'E', 'V', 'C');
    } else if (codec.StartsWith("V_MPEG4/")) {
        track.FourCC = Code('M', 'P', '4', 'V');
    } else if (codec.StartsWith("V_REAL/RV") && codec.TextLength() > kRealVideoCode) {
        track.FourCC = Code('R', 'V', static_cast<char>(codec.data()[kRealVideoCode]), '0');
        track.IsRealMedia = true;
    } else if (codec.Contains("V_VP8")) {
        track.FourCC = Code('V', 'P', 'X', 'V');
    } else if (codec.Contains("V_MPEG1")) {
        track.FourCC = Code('M', 'P', 'G', '1');
    } else if (codec.Contains("V_MPEG2")) {
        track.FourCC = Code('M', 'P', 'G', '2');
    } else if (codec.Contains("V_VP9")) {
        track.FourCC = Code('V', 'P', '-', '9');
    }
    if (track.FourCC != 0) track.BitCount = kVideoBits;
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
    if (FourCC != 0 && FourCCFrom == TagOrigin::kNothing) FourCCFrom = TagOrigin::kCodecId;
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
