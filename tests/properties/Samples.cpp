#include "properties/Samples.h"

#include <zlib.h>

#include <algorithm>
#include <utility>

#include "support/PeculiarFiles.h"

namespace testing_support {

namespace {

Elements Blocks() {
    return {SimpleBlock(1, 0, kKeyFrame, Pattern(9, 1)), SimpleBlock(1, 40, 0, Pattern(7, 2)),
            SimpleBlock(2, 20, kKeyFrame, Pattern(5, 3)),
            BlockGroup(1, 80, Pattern(6, 4), {Int(id::kReferenceBlock, -40, 1)})};
}

Document CuesBehind() {
    return Write(
        {EbmlHeader("webm"),
         Segment({SeekHead({{id::kInfo, "info"},
                            {id::kTracks, "tracks"},
                            {id::kCues, "cues"},
                            {id::kChapters, "chapters"},
                            {id::kAttachments, "attachments"}}),
                  Info(1000).Label("info"), Master(id::kTracks, {Mpeg2Track(), Mp3Track()}).Label("tracks"),
                  Cluster(0, Blocks()).Label("first"), Cluster(1000, Blocks()).Label("second"),
                  Master(id::kCues, {CuePoint(0, 1, "first"), CuePoint(1000, 1, "second")}).Label("cues"),
                  Master(id::kChapters,
                         {Master(id::kEditionEntry,
                                 {Master(id::kChapterAtom,
                                         {Uint(id::kChapterUid, 5),
                                          Master(id::kChapterDisplay, {Str(id::kChapString, "one")})})})})
                      .Label("chapters"),
                  Master(id::kAttachments, {Master(id::kAttachedFile, {Str(id::kFileName, "a.txt"),
                                                                       Bin(id::kFileData, Pattern(8, 5))})})
                      .Label("attachments")})});
}

// Track formats whose configuration comes out of the first frames.
Document FirstFrames() {
    const Element avc =
        Track(1, kVideoType, "V_MS/VFW/FOURCC", {Video(64, 48), Private(BitmapHeader("H264"))});
    const Element mpeg4 =
        Track(2, kVideoType, "V_MS/VFW/FOURCC", {Video(64, 48), Private(BitmapHeader("XVID"))});
    return Write(
        {EbmlHeader(),
         Segment({Info(1000), Master(id::kTracks, {avc, mpeg4}),
                  Cluster(0, {SimpleBlock(1, 0, kKeyFrame,
                                          Hex("00000001 6742001EDA11E4 00000001 68CE3880 00000001 6588")),
                              SimpleBlock(2, 0, kKeyFrame, Hex("000001B001000001B509000001B610AABB")),
                              SimpleBlock(1, 40, 0, Hex("00000001 419A")),
                              SimpleBlock(2, 40, 0, Hex("000001B650"))})})});
}

Document RealMedia() {
    return Write(
        {EbmlHeader(), Segment({Info(1000),
                                Master(id::kTracks, {Track(1, kVideoType, "V_REAL/RV40", {Video(64, 48)}),
                                                     Track(2, kAudioType, "A_REAL/COOK", {Audio(44100, 2)})}),
                                Cluster(0, {SimpleBlock(1, 0, kKeyFrame, Pattern(11, 1)),
                                            SimpleBlock(2, 10, kKeyFrame, Lacing::kFixed,
                                                        {Pattern(6, 2), Pattern(6, 3)})})})});
}

std::vector<Sample> MakeSamples() {
    std::vector<Sample> samples = {{"chapters and attachments", CuesBehind(), false},
                                   {"configuration in the first frames", FirstFrames(), false},
                                   {"RealMedia", RealMedia(), true}};
    for (const PeculiarFile& file : PeculiarFiles()) {
        if (!file.mustOpen) samples.push_back({file.name, file.document, false});
    }
    return samples;
}

}  // namespace

const std::vector<Sample>& Samples() {
    static const std::vector<Sample> samples = MakeSamples();
    return samples;
}

Element Mpeg2Track(uint64_t number, Elements others) {
    others.insert(others.begin(), Video(64, 48));
    return Track(number, kVideoType, "V_MPEG2", std::move(others));
}
Element Mp3Track(uint64_t number, Elements others) {
    others.insert(others.begin(), Audio(44100, 2));
    return Track(number, kAudioType, "A_MPEG/L3", std::move(others));
}
Element TextTrack(uint64_t number, const std::string& codecId) {
    return Track(number, kSubtitleType, codecId);
}
Element Private(const Bytes& bytes) {
    return Bin(id::kCodecPrivate, bytes);
}

Bytes BitmapHeader(const std::string& compression) {
    Bytes header(40);
    header[0] = 40;
    std::copy(compression.begin(), compression.end(), header.begin() + 16);
    return header;
}

Bytes Zlib(const Bytes& plain) {
    uLongf size = compressBound(static_cast<uLong>(plain.size()));
    Bytes packed(size);
    (void)compress2(packed.data(), &size, plain.data(), static_cast<uLong>(plain.size()), 9);
    packed.resize(size);
    return packed;
}

Document OneTrack(const Elements& blocks, Elements trackParts) {
    return Write(
        {EbmlHeader(), Segment({Info(1000), Master(id::kTracks, {Mpeg2Track(1, std::move(trackParts))}),
                                Cluster(0, blocks)})});
}

Bytes Piece(const Elements& elements) {
    return Write(elements).bytes;
}
Bytes OpenSegment(const Elements& children) {
    return Write({EbmlHeader(), Segment(children).UnknownSize()}).bytes;
}

}  // namespace testing_support
