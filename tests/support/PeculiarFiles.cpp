#include "support/PeculiarFiles.h"

#include <zlib.h>

#include <utility>

namespace testing_support {

namespace {

constexpr uint64_t kVideo = 1, kAudio = 2, kSubtitle = 17;

Element Picture(uint64_t number = 1, Elements others = {}) {
    others.push_back(Video(320, 240));
    return Track(number, kVideo, "V_MPEG2", std::move(others));
}
Element Sound(uint64_t number = 2, Elements others = {}) {
    others.push_back(Audio(44100, 2));
    return Track(number, kAudio, "A_MPEG/L3", std::move(others));
}
Element Words(uint64_t number, const std::string& codecId) {
    return Track(number, kSubtitle, codecId, {Str(id::kName, "Words!")});
}

// A picture every 40 ms with the sound between, from `timecode` on.
Elements Blocks(uint8_t seed) {
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
    return Cluster(index * 200, Blocks(static_cast<uint8_t>(index + 1)))
        .Label("part " + std::to_string(index));
}
Element CuesOfParts() {
    return Master(id::kCues,
                  {CuePoint(0, 1, "part 0"), CuePoint(200, 1, "part 1"), CuePoint(400, 1, "part 2")});
}
Document File(Elements children) {
    return Write({EbmlHeader(), Segment(std::move(children))});
}
Document Movie(const Elements& tracks, const Elements& blocks) {
    return File({Info(600), Master(id::kTracks, tracks), Cluster(0, blocks)});
}

Bytes Compress(const Bytes& bytes) {
    uLongf size = compressBound(static_cast<uLong>(bytes.size()));
    Bytes out(size);
    compress2(out.data(), &size, bytes.data(), static_cast<uLong>(bytes.size()), 9);
    out.resize(size);
    return out;
}

Document SeekHeadBehindClusters() {
    return File({SeekHead({{id::kSeekHead, "behind"}}), Info(600), Master(id::kTracks, {Picture(), Sound()}),
                 Part(0), Part(1), Part(2), CuesOfParts().Label("cues"),
                 SeekHead({{id::kCues, "cues"}}).Label("behind")});
}

Document Live() {
    return Write(
        {EbmlHeader("webm"), Segment({Info(0), Master(id::kTracks, {Picture(), Sound()}),
                                      Part(0).UnknownSize(1), Part(1).UnknownSize(8),
                                      Master(id::kTags, {Bin(id::kVoid, Bytes(20))}), Part(2).UnknownSize(4)})
                                 .UnknownSize(8)});
}

Document Encoded(const Element& encoding, const std::vector<Bytes>& frames) {
    Elements blocks;
    for (size_t i = 0; i < frames.size(); ++i) {
        blocks.push_back(SimpleBlock(1, static_cast<int16_t>(i * 40), kKeyFrame, frames[i]));
    }
    return Movie({Picture(1, {Master(id::kContentEncodings, {encoding})})}, blocks);
}

Document Subtitled() {
    auto event = [](uint64_t track, int16_t time, const std::string& text) {
        return BlockGroup(track, time, Text(text), {Uint(id::kBlockDuration, 30)});
    };
    return Movie({Picture(), Words(2, "S_TEXT/ASS"), Words(3, "S_TEXT/UTF8")},
                 {SimpleBlock(1, 0, kKeyFrame, Pattern(9, 1)), event(2, 1, "0,0,Default,,0,0,0,,Hello"),
                  event(2, 2, "1,0,Default,,0,0,0,,World"), SimpleBlock(1, 40, 0, Pattern(9, 2)),
                  event(3, 41, "plain"), event(3, 45, "text")});
}

Document DamagedBetweenClusters() {
    return File({Info(600), Master(id::kTracks, {Picture(), Sound()}), Part(0), Raw(Bytes(1021)), Part(1),
                 Part(2), Bin(id::kVoid, Bytes(2000))});
}

}  // namespace

std::vector<PeculiarFile> PeculiarFiles() {
    const Element parts[] = {Part(0), Part(1), Part(2)};
    const Elements head = {Info(600), Master(id::kTracks, {Picture(), Sound()})};
    const std::vector<Bytes> laces = {Pattern(5, 1), Pattern(300, 2), Pattern(7, 3)};
    const Bytes vorbisHeaders = Hex("020101 01 03 05");
    return {
        {"cues-in-front", File({head[0], head[1], CuesOfParts(), parts[0], parts[1], parts[2]})},
        {"no-cues", File({head[0], head[1], parts[0], parts[1], parts[2]})},
        {"seekhead-behind-clusters", SeekHeadBehindClusters()},
        {"live-unknown-sizes", Live()},
        {"two-tracks-elements", File({head[0], Master(id::kTracks, {Picture()}),
                                      Master(id::kTracks, {Sound()}), parts[0], parts[1], parts[2]})},
        {"negative-timecodes", File({head[0], Master(id::kTracks, {Picture()}),
                                     Cluster(100, {SimpleBlock(1, -5, kKeyFrame, Pattern(3, 1)),
                                                   SimpleBlock(1, 5, 0, Pattern(4, 1))})})},
        {"xiph-laced", Movie({Sound(1)}, {SimpleBlock(1, 0, kKeyFrame, Lacing::kXiph, laces)})},
        {"ebml-laced-vorbis",
         Movie({Track(1, kAudio, "A_VORBIS", {Bin(id::kCodecPrivate, vorbisHeaders)})},
               {SimpleBlock(1, 0, kKeyFrame, Lacing::kEbml, laces)}),
         0, true},
        {"header-stripping", Encoded(Encoding(0, 0, 3, Hex("CAFE")), {Pattern(4, 1), Pattern(8, 2)})},
        {"zlib",
         Encoded(Encoding(0, 0, 0), {Compress(Pattern(4000, 1)), Hex("BAD0"), Compress(Bytes(1000))})},
        {"avc-length-prefixes",
         Movie({Track(1, kVideo, "V_MPEG4/ISO/AVC",
                      {Video(320, 240), Bin(id::kCodecPrivate, Hex("0142001EFFE10007"))})},
               {SimpleBlock(1, 0, kKeyFrame, Hex("00000003656667 0000000168")),
                SimpleBlock(1, 40, 0, Hex("00000002416F 00000009AA"))})},
        {"subtitles-merged-and-plain", Subtitled()},
        {"damage-between-clusters", DamagedBetweenClusters()},
        {"block-past-its-cluster",
         File({head[0], Master(id::kTracks, {Picture()}),
               Cluster(0, {SimpleBlock(1, 0, kKeyFrame, Pattern(9, 1)).DeclaredSize(20)}),
               Cluster(40, {SimpleBlock(1, 0, kKeyFrame, Pattern(9, 2))})})},
    };
}

}  // namespace testing_support
