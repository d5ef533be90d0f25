#include "support/Oddities.h"

#include <gtest/gtest.h>

#include <functional>
#include <utility>

namespace testing_support {

namespace {

const Bytes kVop = Hex("000001B0 01 000001B5 8913 000001B6 10 20 30 40 50");
const Bytes kAnnexB =
    Hex("00000001 6742C00D DA0507E8 40000003 00400000 0C83C508 EF 00000001 68CE3C80 00000001 6588");
const Bytes kVorbisHeaders = Hex("02 04 03 01766F72 036F72 05626F6F6B73");
const Bytes kA52 = Hex("0B77 0000 00 40 40 FF FF");

// A file with what most files have, of which an oddity replaces a part.
struct Parts {
    std::string docType = "matroska";
    Element info = Info(3000);
    Elements tracks = {
        Track(1, kVideoType, "V_MPEG4/ISO/AVC",
              {Bin(id::kCodecPrivate, Hex("0142C00DFFE1000467420DC001000468CE3C80")), Video(64, 48)}),
        Track(2, kAudioType, "A_AAC/MPEG4/LC", {Audio(44100, 2)}), Track(3, kSubtitleType, "S_TEXT/UTF8")};
    Elements beforeClusters, behindClusters;
    Elements clusters = {Cluster(0, {SimpleBlock(1, 0, kKeyFrame, Hex("00000004 65880102")),
                                     SimpleBlock(2, 0, kKeyFrame, Hex("2110041B")),
                                     BlockGroup(3, 5, Text("one"), {Uint(id::kBlockDuration, 40)}),
                                     SimpleBlock(1, 40, 0, Hex("00000002 4188"))})
                             .Label("first"),
                         Cluster(1000, {SimpleBlock(1, 0, kKeyFrame, Hex("00000001 65")),
                                        BlockGroup(2, 10, Hex("2120")), BlockGroup(3, 20, Text("two"))})
                             .Label("second")};
    std::vector<std::pair<uint32_t, std::string>> listed = {
        {id::kInfo, "info"}, {id::kTracks, "tracks"}, {id::kCues, "cues"}};
    bool hasSeekHead = true, hasCues = true;

    Bytes Write() const {
        Elements children;
        if (hasSeekHead) children.push_back(SeekHead(listed));
        children.push_back(info.Label("info"));
        children.push_back(Master(id::kTracks, tracks).Label("tracks"));
        Append(&children, beforeClusters);
        Append(&children, clusters);
        if (hasCues) {
            children.push_back(
                Master(id::kCues, {CuePoint(0, 1, "first"), CuePoint(1000, 1, "second")}).Label("cues"));
        } else if (hasSeekHead) {
            children.push_back(Bin(id::kVoid, Bytes(4)).Label("cues"));
        }
        Append(&children, behindClusters);
        return testing_support::Write({EbmlHeader(docType), Segment(children)}).bytes;
    }

    static void Append(Elements* to, const Elements& more) {
        to->insert(to->end(), more.begin(), more.end());
    }
};

using Change = std::function<void(Parts&)>;

// One track of the codec, with blocks that hold `frame`.
Change OneTrack(uint64_t type, const std::string& codec, Elements details, Bytes frame,
                Elements blocks = {}) {
    return [=](Parts& parts) {
        parts.tracks = {Track(1, type, codec, details)};
        Elements all = {SimpleBlock(1, 0, kKeyFrame, frame), SimpleBlock(1, 20, 0, frame)};
        Parts::Append(&all, blocks);
        parts.clusters = {Cluster(0, all).Label("first"), Cluster(1000, all).Label("second")};
    };
}

Bytes WaveHeader(uint16_t tag) {
    Bytes header = {static_cast<uint8_t>(tag), static_cast<uint8_t>(tag >> 8)};
    const Bytes rest = Hex("0200 44AC0000 803E0000 0400 1000 0000");
    header.insert(header.end(), rest.begin(), rest.end());
    return header;
}

Element Encodings(Elements encodings) {
    return Master(id::kContentEncodings, std::move(encodings));
}

struct Variation {
    const char* name;
    Change change;
    unsigned traits = 0;
};

std::vector<Variation> Codecs() {
    const Element picture = Video(64, 48), sound = Audio(48000, 2, {Uint(id::kBitDepth, 16)});
    return {
        {"hevc",
         OneTrack(kVideoType, "V_MPEGH/ISO/HEVC", {Private(Pattern(30, 1)), picture}, Hex("00000002 2601"))},
        {"avc_in_bitmap",
         OneTrack(kVideoType, "V_MS/VFW/FOURCC", {Private(BitmapHeader("H264")), picture}, kAnnexB),
         kDamaged},
        {"xvid_in_bitmap",
         OneTrack(kVideoType, "V_MS/VFW/FOURCC", {Private(BitmapHeader("XVID")), picture}, kVop), kDamaged},
        {"div3_in_bitmap",
         OneTrack(kVideoType, "V_MS/VFW/FOURCC", {Private(BitmapHeader("DIV3")), picture}, kVop)},
        {"mpeg4_bare", OneTrack(kVideoType, "V_MPEG4/ISO/ASP", {picture}, kVop)},
        {"mpeg4_private", OneTrack(kVideoType, "V_MPEG4/ISO/SP", {Private(kVop), picture}, kVop)},
        {"mpeg2", OneTrack(kVideoType, "V_MPEG2", {Private(Pattern(22, 3)), picture}, Hex("000001B3"))},
        {"mpeg1", OneTrack(kVideoType, "V_MPEG1", {picture}, Hex("000001B3"))},
        {"vp9", OneTrack(kVideoType, "V_VP9", {picture}, Hex("824983"))},
        {"real_video", OneTrack(kVideoType, "V_REAL/RV40", {picture}, Pattern(9, 4))},
        {"real_audio", OneTrack(kAudioType, "A_REAL/COOK", {sound}, Pattern(9, 5)),
         kDamaged | kHoldsAddresses},
        {"vorbis",
         OneTrack(kAudioType, "A_VORBIS", {Private(kVorbisHeaders), sound}, Pattern(9, 6),
                  {SimpleBlock(1, 40, kKeyFrame | 2, Lacing::kXiph, {Hex("01"), Hex("0203"), Hex("04")})})},
        {"vorbis_broken", OneTrack(kAudioType, "A_VORBIS", {Private(Hex("020101")), sound}, Pattern(9, 6))},
        {"aac_private", OneTrack(kAudioType, "A_AAC", {Private(Hex("1210")), sound}, Pattern(9, 7))},
        {"aac_bare", OneTrack(kAudioType, "A_AAC", {sound}, Pattern(9, 7))},
        {"aac_odd_rate", OneTrack(kAudioType, "A_AAC/MPEG4/LC", {Audio(7350, 2)}, Pattern(9, 7))},
        {"ac3", OneTrack(kAudioType, "A_AC3", {sound}, kA52)},
        {"dts", OneTrack(kAudioType, "A_DTS", {sound}, Hex("7FFE8001"))},
        {"flac", OneTrack(kAudioType, "A_FLAC", {Private(Text("fLaC")), sound}, Hex("FFF8"))},
        {"pcm_big", OneTrack(kAudioType, "A_PCM/INT/BIG", {sound}, Pattern(8, 8))},
        {"acm_wma", OneTrack(kAudioType, "A_MS/ACM", {Private(WaveHeader(0x161)), sound}, Pattern(8, 9))},
        {"acm_short", OneTrack(kAudioType, "A_MS/ACM", {Private(Bytes(17)), sound}, Pattern(8, 9))},
        {"acm_vorbis", OneTrack(kAudioType, "A_MS/ACM", {Private(WaveHeader(0x5001)), sound}, Pattern(8, 9))},
        {"unknown_codec", OneTrack(kVideoType, "V_UNCOMPRESSED", {picture}, Pattern(8, 10))},
        {"type_of_neither", OneTrack(3, "V_MPEG2", {picture}, Pattern(8, 10))},
    };
}

std::vector<Variation> Blocks() {
    const std::vector<Bytes> frames = {Hex("AA"), Pattern(300, 1), Hex("BBCC"), Hex("DD")};
    const std::vector<Bytes> even = {Hex("AABB"), Hex("CCDD"), Hex("EEFF")};
    const auto laced = [](Element block) {
        return OneTrack(kVideoType, "V_MPEG2", {}, Hex("0102"), {std::move(block)});
    };
    const auto raw = [&](const char* bytes) { return laced(Bin(id::kSimpleBlock, Hex(bytes))); };
    const Element zlib = Encoding(0, 0, 0), strip = Encoding(1, 0, 3, Hex("000001"));
    return {
        {"lacing_xiph", laced(SimpleBlock(1, 40, 0x80, Lacing::kXiph, frames))},
        {"lacing_ebml", laced(SimpleBlock(1, 40, 0x80, Lacing::kEbml, frames))},
        {"lacing_fixed", laced(SimpleBlock(1, 40, 0x80, Lacing::kFixed, even))},
        {"lacing_fixed_255", raw("81 0000 84 FF 0102")},
        {"lacing_ebml_0", raw("81 0000 86 00 81 0102")},
        {"lacing_past_end", raw("81 0000 82 02 FF10 05 01")},
        {"lacing_unknown_size", raw("81 0000 86 02 FF FF 01020304")},
        {"block_of_0", raw("")},
        {"block_of_3", raw("810000")},
        {"block_track_unknown", raw("FF 0000 80 01")},
        {"block_past_cluster", laced(Bin(id::kSimpleBlock, Hex("8100508001")).DeclaredSize(0x4000))},
        {"block_of_no_size", laced(Bin(id::kSimpleBlock, Hex("8100508001")).UnknownSize(8))},
        {"group_references", laced(BlockGroup(1, 60, Hex("05"),
                                              {Int(id::kReferenceBlock, -20, 1), Uint(id::kBlockDuration, 20),
                                               Bin(id::kCodecState, Hex("01"))}))},
        {"group_without_block", laced(Master(id::kBlockGroup, {Uint(id::kBlockDuration, 20)}))},
        {"group_time_slices",
         laced(BlockGroup(1, 60, Hex("05"), {Master(id::kTimeSlice, {Uint(id::kLaceNumber, 1)})}))},
        {"zlib_corrupt", OneTrack(kVideoType, "V_MPEG2", {Encodings({zlib})}, Hex("789C0102030405"))},
        {"zlib_bomb", OneTrack(kVideoType, "V_MPEG2", {Encodings({zlib})}, Zlib(Bytes(1 << 20)))},
        {"stripped", OneTrack(kVideoType, "V_MPEG2", {Encodings({strip})}, Hex("B301"),
                              {SimpleBlock(1, 40, 0x80, Lacing::kXiph, frames)})},
        {"zlib_and_stripped", OneTrack(kVideoType, "V_MPEG2", {Encodings({strip, zlib})}, Zlib(Hex("B301")))},
        {"encrypted", OneTrack(kVideoType, "V_MPEG2", {Encodings({Encoding(0, 1, 0)})}, Hex("B301"))},
        {"private_only_scope",
         OneTrack(kVideoType, "V_MPEG2",
                  {Encodings({Master(id::kContentEncoding, {Uint(id::kContentEncodingScope, 2)})})},
                  Hex("B301"))},
    };
}

std::vector<Variation> Structure() {
    return {
        {"plain", [](Parts&) {}},
        {"other_doctype", [](Parts& parts) { parts.docType = "matroskb"; }},
        {"no_seek_head", [](Parts& parts) { parts.hasSeekHead = false; }},
        {"no_clusters", [](Parts& parts) { parts.hasCues = false, parts.clusters.clear(); }},
        {"duration_nan",
         [](Parts& parts) { parts.info = Master(id::kInfo, {Bin(id::kDuration, Hex("7FF8000000000000"))}); }},
        {"duration_4_bytes",
         [](Parts& parts) { parts.info = Master(id::kInfo, {Flt4(id::kDuration, 2000)}); }},
        {"scale_0", [](Parts& parts) { parts.info = Info(3000, 0); }},
        {"scale_huge", [](Parts& parts) { parts.info = Info(3000, UINT64_MAX); }},
        {"unknown_size_1", [](Parts& parts) { parts.clusters[1] = parts.clusters[1].UnknownSize(1); }},
        {"cluster_too_large",
         [](Parts& parts) { parts.clusters[1] = parts.clusters[1].DeclaredSize(1 << 20); }},
        {"timecode_behind_blocks",
         [](Parts& parts) {
             parts.clusters[0] =
                 Master(id::kCluster, {SimpleBlock(1, 0, 0x80, Hex("01")), Uint(id::kClusterTimecode, 7)})
                     .Label("first");
         }},
        {"timecode_extreme",
         [](Parts& parts) {
             parts.clusters[1] =
                 Cluster(UINT64_MAX, {SimpleBlock(1, -32768, 0x80, Hex("01"))}).Label("second");
         }},
        {"damaged",
         [](Parts& parts) {
             parts.clusters.insert(parts.clusters.begin() + 1, Raw(Pattern(40, 0x0F)));
             parts.clusters.push_back(Bin(id::kVoid, Bytes(1200)));
         }},
        {"resync",
         [](Parts& parts) {
             Bytes junk(1500, 0x02);
             junk[0] = 0x00;
             parts.clusters.insert(parts.clusters.begin() + 1, Raw(junk));
             parts.clusters.push_back(Bin(id::kVoid, Bytes(2200)));
         }},
        {"chapters",
         [](Parts& parts) {
             const Element display = Master(
                 id::kChapterDisplay,
                 {Str(id::kChapString, "one"), Str(id::kChapLanguage, "eng"), Str(id::kChapCountry, "gb")});
             Element atom =
                 Master(id::kChapterAtom, {Uint(id::kChapterUid, 5), Uint(id::kChapterTimeStart, 1),
                                           Uint(id::kChapterTimeEnd, 2), display});
             for (int i = 0; i < 5; ++i)
                 atom = Master(id::kChapterAtom, {atom, Uint(id::kChapterFlagHidden, 1)});
             parts.listed.push_back({id::kChapters, "chapters"});
             parts.behindClusters = {
                 Master(id::kChapters, {Master(id::kEditionEntry, {atom, Uint(id::kChapterFlagEnabled, 0)})})
                     .Label("chapters")};
         },
         kDamaged},
        {"attachment",
         [](Parts& parts) {
             parts.listed.push_back({id::kAttachments, "attachments"});
             parts.behindClusters = {
                 Master(id::kAttachments,
                        {Master(id::kAttachedFile, {Str(id::kFileDescription, "d"), Str(id::kFileName, "a"),
                                                    Str(id::kFileMimeType, "text/plain"),
                                                    Uint(id::kFileUid, 7), Bin(id::kFileData, Bytes(9))})})
                     .Label("attachments")};
         }},
        {"many_blocks",
         [](Parts& parts) {
             Elements blocks;
             for (int16_t i = 0; i < 300; ++i)
                 blocks.push_back(SimpleBlock(1 + static_cast<uint64_t>(i % 2), i, 0x80, Hex("00")));
             parts.clusters[1] = Cluster(1000, blocks).Label("second");
         }},
        {"block_additions",
         [](Parts& parts) {
             const Element more =
                 Master(id::kBlockMore, {Uint(id::kBlockAddId, 2), Bin(id::kBlockAdditional, Hex("0102"))});
             parts.clusters.push_back(
                 Cluster(2000, {BlockGroup(1, 0, Hex("01"), {Master(id::kBlockAdditions, {more, more})})}));
         }},
        {"attachment_too_large",
         [](Parts& parts) {
             parts.beforeClusters = {Master(
                 id::kAttachments,
                 {Master(id::kAttachedFile, {Bin(id::kFileData, Bytes(9)).DeclaredSize(0xFFFFFFFF)})})};
         }},
        {"seek_head_ring",
         [](Parts& parts) {
             parts.listed.push_back({id::kSeekHead, "other"});
             parts.beforeClusters = {SeekHead({{id::kSeekHead, "other"}}).Label("one")};
             parts.behindClusters = {
                 SeekHead({{id::kSeekHead, "one"}, {id::kTracks, "tracks"}}).Label("other")};
         }},
        {"tracks_of_one_number", [](Parts& parts) { parts.tracks.push_back(Track(1, kAudioType, "A_AC3")); }},
        {"huge_track_number",
         [](Parts& parts) { parts.tracks[1] = Track(uint64_t{1} << 40, kAudioType, "A_AC3"); }},
        {"names_and_languages",
         [](Parts& parts) {
             parts.tracks[1] =
                 Track(2, kAudioType, "A_AC3", {Str(id::kName, "Commentary"), Str(id::kLanguage, "chi")});
             parts.tracks.push_back(
                 Track(4, kAudioType, "A_AC3", {Str(id::kLanguage, "eng"), Audio(48000, 6)}));
         }},
        {"two_subtitle_tracks",
         [](Parts& parts) {
             parts.tracks.push_back(Track(4, kSubtitleType, "S_TEXT/ASS"));
             Elements events;
             for (int i = 0; i < 6; ++i) {
                 events.push_back(BlockGroup(3 + static_cast<uint64_t>(i) / 2 % 2, static_cast<int16_t>(i),
                                             Text("1,0,Default,,0,0,0,,text " + std::to_string(i)),
                                             {Uint(id::kBlockDuration, 3)}));
             }
             events.push_back(SimpleBlock(1, 90, 0x80, Hex("01")));
             parts.clusters.push_back(Cluster(2000, events));
         }},
        {"cue_details",
         [](Parts& parts) {
             parts.behindClusters = {Master(
                 id::kCues, {Master(id::kCuePoint, {Uint(id::kCueTime, 9)}),
                             Master(id::kCuePoint,
                                    {Uint(id::kCueTime, 2000),
                                     Master(id::kCueTrackPositions,
                                            {Uint(id::kCueTrack, 1), Uint(id::kCueClusterPosition, 1 << 20),
                                             Uint(id::kCueBlockNumber, 2),
                                             Master(id::kCueReference, {Uint(id::kCueRefTime, 1)})})})})};
         }},
        {"voids_and_checksums",
         [](Parts& parts) {
             parts.beforeClusters = {Bin(id::kCrc32, Bytes(4)), Bin(id::kVoid, Bytes(20)),
                                     Master(id::kTags, {})};
         }},
        {"empty_masters",
         [](Parts& parts) {
             parts.beforeClusters = {Master(id::kTracks, {}),   Master(id::kCues, {}),
                                     Master(id::kChapters, {}), Master(id::kAttachments, {}),
                                     Master(id::kSeekHead, {}), Master(id::kInfo, {})};
         }},
    };
}

// Files whose tracks and units are written down.

Element Picture(uint64_t number = 1, Elements others = {}) {
    others.push_back(Video(320, 240));
    return Track(number, kVideoType, "V_MPEG2", std::move(others));
}
Element Sound(uint64_t number = 2, Elements others = {}) {
    others.push_back(Audio(44100, 2));
    return Track(number, kAudioType, "A_MPEG/L3", std::move(others));
}
Element Words(uint64_t number, const std::string& codecId) {
    return Track(number, kSubtitleType, codecId, {Str(id::kName, "Words!")});
}

// A picture every 40 ms with the sound between, from `timecode` on.
Elements Pictures(uint8_t seed) {
    Elements blocks;
    for (int i = 0; i < 5; ++i) {
        const auto time = static_cast<int16_t>(i * 40);
        const uint8_t flags = i == 0 ? kKeyFrame : 0;
        blocks.push_back(SimpleBlock(1, time, flags, Pattern(30 + static_cast<size_t>(i), seed)));
        blocks.push_back(SimpleBlock(2, static_cast<int16_t>(time + 10), kKeyFrame, Pattern(12, seed)));
    }
    return blocks;
}
Element Part(uint64_t index) {
    return Cluster(index * 200, Pictures(static_cast<uint8_t>(index + 1)))
        .Label("part " + std::to_string(index));
}
Element CuesOfParts() {
    return Master(id::kCues,
                  {CuePoint(0, 1, "part 0"), CuePoint(200, 1, "part 1"), CuePoint(400, 1, "part 2")});
}
Bytes File(Elements children) {
    return Write({EbmlHeader(), Segment(std::move(children))}).bytes;
}
Bytes Movie(const Elements& tracks, const Elements& blocks) {
    return File({Info(600), Master(id::kTracks, tracks), Cluster(0, blocks)});
}

Bytes SeekHeadBehindClusters() {
    return File({SeekHead({{id::kSeekHead, "behind"}}), Info(600), Master(id::kTracks, {Picture(), Sound()}),
                 Part(0), Part(1), Part(2), CuesOfParts().Label("cues"),
                 SeekHead({{id::kCues, "cues"}}).Label("behind")});
}

Bytes Live() {
    return Write({EbmlHeader("webm"),
                  Segment({Info(0), Master(id::kTracks, {Picture(), Sound()}), Part(0).UnknownSize(1),
                           Part(1).UnknownSize(8), Master(id::kTags, {Bin(id::kVoid, Bytes(20))}),
                           Part(2).UnknownSize(4)})
                      .UnknownSize(8)})
        .bytes;
}

Bytes Encoded(const Element& encoding, const std::vector<Bytes>& frames) {
    Elements blocks;
    for (size_t i = 0; i < frames.size(); ++i) {
        blocks.push_back(SimpleBlock(1, static_cast<int16_t>(i * 40), kKeyFrame, frames[i]));
    }
    return Movie({Picture(1, {Master(id::kContentEncodings, {encoding})})}, blocks);
}

Bytes Subtitled() {
    auto event = [](uint64_t track, int16_t time, const std::string& text) {
        return BlockGroup(track, time, Text(text), {Uint(id::kBlockDuration, 30)});
    };
    return Movie({Picture(), Words(2, "S_TEXT/ASS"), Words(3, "S_TEXT/UTF8")},
                 {SimpleBlock(1, 0, kKeyFrame, Pattern(9, 1)), event(2, 1, "0,0,Default,,0,0,0,,Hello"),
                  event(2, 2, "1,0,Default,,0,0,0,,World"), SimpleBlock(1, 40, 0, Pattern(9, 2)),
                  event(3, 41, "plain"), event(3, 45, "text")});
}

Bytes DamagedBetweenClusters() {
    return File({Info(600), Master(id::kTracks, {Picture(), Sound()}), Part(0), Raw(Bytes(1021)), Part(1),
                 Part(2), Bin(id::kVoid, Bytes(2000))});
}

std::vector<Oddity> Golden() {
    const Element parts[] = {Part(0), Part(1), Part(2)};
    const Elements head = {Info(600), Master(id::kTracks, {Picture(), Sound()})};
    const std::vector<Bytes> laces = {Pattern(5, 1), Pattern(300, 2), Pattern(7, 3)};
    const Bytes vorbisHeaders = Hex("020101 01 03 05");
    return {
        {"cues-in-front", kGolden | kDamaged,
         File({head[0], head[1], CuesOfParts(), parts[0], parts[1], parts[2]})},
        {"no-cues", kGolden | kDamaged, File({head[0], head[1], parts[0], parts[1], parts[2]})},
        {"seekhead-behind-clusters", kGolden | kDamaged, SeekHeadBehindClusters()},
        {"live-unknown-sizes", kGolden | kDamaged, Live()},
        {"two-tracks-elements", kGolden | kDamaged,
         File({head[0], Master(id::kTracks, {Picture()}), Master(id::kTracks, {Sound()}), parts[0], parts[1],
               parts[2]})},
        {"negative-timecodes", kGolden | kDamaged,
         File({head[0], Master(id::kTracks, {Picture()}),
               Cluster(100, {SimpleBlock(1, -5, kKeyFrame, Pattern(3, 1)),
                             SimpleBlock(1, 5, 0, Pattern(4, 1))})})},
        {"xiph-laced", kGolden | kDamaged,
         Movie({Sound(1)}, {SimpleBlock(1, 0, kKeyFrame, Lacing::kXiph, laces)})},
        {"ebml-laced-vorbis", kGolden | kMustOpen,
         Movie({Track(1, kAudioType, "A_VORBIS", {Bin(id::kCodecPrivate, vorbisHeaders)})},
               {SimpleBlock(1, 0, kKeyFrame, Lacing::kEbml, laces)})},
        {"header-stripping", kGolden | kDamaged,
         Encoded(Encoding(0, 0, 3, Hex("CAFE")), {Pattern(4, 1), Pattern(8, 2)})},
        {"zlib", kGolden | kDamaged,
         Encoded(Encoding(0, 0, 0), {Zlib(Pattern(4000, 1)), Hex("BAD0"), Zlib(Bytes(1000))})},
        {"avc-length-prefixes", kGolden | kDamaged,
         Movie({Track(1, kVideoType, "V_MPEG4/ISO/AVC",
                      {Video(320, 240), Bin(id::kCodecPrivate, Hex("0142001EFFE10007"))})},
               {SimpleBlock(1, 0, kKeyFrame, Hex("00000003656667 0000000168")),
                SimpleBlock(1, 40, 0, Hex("00000002416F 00000009AA"))})},
        {"subtitles-merged-and-plain", kGolden | kDamaged, Subtitled()},
        {"damage-between-clusters", kGolden | kDamaged, DamagedBetweenClusters()},
        {"block-past-its-cluster", kGolden | kDamaged,
         File({head[0], Master(id::kTracks, {Picture()}),
               Cluster(0, {SimpleBlock(1, 0, kKeyFrame, Pattern(9, 1)).DeclaredSize(20)}),
               Cluster(40, {SimpleBlock(1, 0, kKeyFrame, Pattern(9, 2))})})},
    };
}

std::vector<Oddity> All() {
    std::vector<Oddity> all = Golden();
    for (const auto& variations : {Structure(), Blocks(), Codecs()}) {
        for (const Variation& variation : variations) {
            Parts parts;
            variation.change(parts);
            all.push_back({variation.name, variation.traits, parts.Write()});
        }
    }
    return all;
}

}  // namespace

std::vector<Oddity> Oddities(unsigned traits) {
    std::vector<Oddity> all = All(), found;
    for (Oddity& oddity : all) {
        if ((oddity.traits & traits) == traits) found.push_back(std::move(oddity));
    }
    return found;
}

Bytes OddityNamed(const std::string& name) {
    std::vector<Oddity> all = All();
    for (Oddity& oddity : all) {
        if (oddity.name == name) return std::move(oddity.bytes);
    }
    ADD_FAILURE() << "no oddity " << name;
    return {};
}

}  // namespace testing_support
