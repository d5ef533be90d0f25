// What a file says about its own structure, and what comes of it when that is wrong.
#include <cmath>
#include <limits>

#include "properties/Measure.h"

namespace testing_support {
namespace {

constexpr uint64_t kLargestSize = (1ull << 56) - 2;
constexpr uint64_t kFourGiB = 1ull << 32;

const Element kBlock = SimpleBlock(1, 0, kKeyFrame, Hex("AABBCC"));

Element Tracks(const Elements& entries) {
    return Master(id::kTracks, entries);
}
// A Segment with one track, and these Clusters.
Content Movie(const Elements& clusters) {
    Elements children = {Info(1000), Tracks({Mpeg2Track()})};
    children.insert(children.end(), clusters.begin(), clusters.end());
    return Whole({EbmlHeader(), Segment(children)});
}
// A Segment with one block on one track that has these parts.
Content WithTrack(const Elements& parts) {
    return Whole(OneTrack({kBlock}, parts));
}
Content WithBlocks(const Elements& blocks) {
    return Whole(OneTrack(blocks));
}

TEST(Structure, Sizes) {
    const Row rows[] = {
        {"sound", Movie({Cluster(0, {kBlock})}), "1 track, 1 unit"},
        {"Segment of 2^56-2",
         Whole({EbmlHeader(),
                Segment({Info(1), Tracks({Mpeg2Track()}), Cluster(0, {kBlock})}).DeclaredSize(kLargestSize)}),
         "1 track, 1 unit"},
        {"Cluster of 2^56-2", Movie({Cluster(0, {kBlock}).DeclaredSize(kLargestSize)}), "1 track, 1 unit"},
        {"block of 2^56-2", Movie({Cluster(0, {kBlock.DeclaredSize(kLargestSize)}), Cluster(0, {kBlock})}),
         "1 track, 1 unit; beyond_source 1"},
        {"block of 4 GiB and its own size",
         Movie({Cluster(0, {kBlock.DeclaredSize(kFourGiB + 7)}), Cluster(0, {kBlock})}),
         "1 track, 1 unit; beyond_source 1"},
        {"Cluster of 4 GiB and its own size",
         Movie({Cluster(0, {kBlock}).DeclaredSize(kFourGiB + 12), Cluster(0, {kBlock})}), "1 track, 1 unit"},
        {"EBML header of 2^56-2",
         Whole({EbmlHeader().DeclaredSize(kLargestSize),
                Segment({Info(1), Tracks({Mpeg2Track()}), Cluster(0, {kBlock})})}),
         "0 tracks, 0 units"},
        {"Tracks of 2^56-2",
         Whole({EbmlHeader(),
                Segment({Info(1), Tracks({Mpeg2Track()}).DeclaredSize(kLargestSize), Cluster(0, {kBlock})})}),
         "1 track, 0 units"},
        {"Void of 2^56-2 in front",
         Movie({Bin(id::kVoid, {}).DeclaredSize(kLargestSize), Cluster(0, {kBlock})}), "1 track, 0 units"},
        {"codec private of 4 GiB", WithTrack({Private(Bytes(4)).DeclaredSize(kFourGiB)}),
         "1 track, 1 unit; beyond_source 1"},
        {"codec private of 4 GiB and 8 bytes", WithTrack({Private(Bytes(8)).DeclaredSize(kFourGiB + 8)}),
         "1 track, 1 unit; beyond_source 1"},
        {"name of 4 GiB", WithTrack({Str(id::kName, "n").DeclaredSize(kFourGiB)}),
         "1 track, 1 unit; beyond_source 1"},
        {"name of 2^56-2", WithTrack({Str(id::kName, "n").DeclaredSize(kLargestSize)}),
         "1 track, 1 unit; beyond_source 1"},
        {"language of 4 GiB", WithTrack({Str(id::kLanguage, "n").DeclaredSize(kFourGiB)}),
         "1 track, 1 unit; beyond_source 1"},
        {"integer of 2^40", WithTrack({Uint(id::kDefaultDuration, 1).DeclaredSize(1ull << 40)}),
         "1 track, 1 unit"},
        {"float of 2^40", WithTrack({Flt(id::kTrackTimecodeScale, 1).DeclaredSize(1ull << 40)}),
         "1 track, 1 unit"},
        {"TrackNumber of 9 bytes",
         Whole({EbmlHeader(),
                Segment({Tracks({Master(id::kTrackEntry,
                                        {Bin(id::kTrackNumber, Hex("FF0000000000000001")),
                                         Uint(id::kTrackType, 1), Str(id::kCodecId, "V_MPEG2")})}),
                         Cluster(0, {kBlock})})}),
         "1 track, 1 unit"},
        {"DocType of a megabyte",
         Whole({EbmlHeader("matroska" + std::string(1 << 20, '\0')),
                Segment({Info(1), Tracks({Mpeg2Track()}), Cluster(0, {kBlock})})}),
         "1 track, 1 unit"},
        {"DocType of a megabyte that is not ours",
         Whole({EbmlHeader(std::string(1 << 20, 'm')),
                Segment({Info(1), Tracks({Mpeg2Track()}), Cluster(0, {kBlock})})}),
         "0 tracks, 0 units"},
    };
    CheckRows(rows);
}

TEST(Structure, BlocksPastWhatHoldsThem) {
    const Row rows[] = {
        {"no byte", WithBlocks({Bin(id::kSimpleBlock, {}), kBlock}), "1 track, 1 unit"},
        {"one byte", WithBlocks({Bin(id::kSimpleBlock, Hex("81")), kBlock}), "1 track, 2 units"},
        {"two bytes", WithBlocks({Bin(id::kSimpleBlock, Hex("8100")), kBlock}),
         "1 track, 1 unit; bad_lacing 1"},
        {"three bytes", WithBlocks({Bin(id::kSimpleBlock, Hex("810000")), kBlock}),
         "1 track, 1 unit; bad_lacing 1"},
        {"a header and no frame", WithBlocks({Bin(id::kSimpleBlock, Hex("81000080")), kBlock}),
         "1 track, 2 units"},
        {"three bytes in a group",
         WithBlocks({Master(id::kBlockGroup, {Bin(id::kBlock, Hex("810000"))}), kBlock}),
         "1 track, 1 unit; bad_lacing 1"},
        {"past the Cluster", Movie({Cluster(0, {kBlock.DeclaredSize(12)}), Cluster(40, {kBlock})}),
         "1 track, 2 units"},
        {"past the BlockGroup",
         WithBlocks(
             {Master(id::kBlockGroup, {Bin(id::kBlock, BlockBytes(1, 0, 0, Hex("AABBCC"))).DeclaredSize(12)}),
              kBlock}),
         "1 track, 2 units"},
        {"past the file", Movie({Cluster(0, {kBlock.DeclaredSize(100)})}),
         "1 track, 0 units; beyond_source 1"},
        {"track number of 8 bytes", WithBlocks({Bin(id::kSimpleBlock, Hex("0100000000000001 0000 80 AA"))}),
         "1 track, 1 unit"},
        {"track number 2^32+1", WithBlocks({Bin(id::kSimpleBlock, Hex("0100000100000001 0000 80 AA"))}),
         "1 track, 0 units"},
        {"track number without a first bit",
         WithBlocks({Bin(id::kSimpleBlock, Hex("00 0000 80 AA")), kBlock}), "1 track, 1 unit"},
    };
    CheckRows(rows);
}

// Bytes that begin no ID, or no size. Only a Segment is searched for what follows.
TEST(Structure, BytesThatBeginNothing) {
    const Element noId = Raw(Hex("00000000")), noSize = Raw(Hex("EC00"));
    // The search looks at whole kilobytes, so there have to be some.
    const Element far = Bin(id::kVoid, Bytes(2000));
    const Row rows[] = {
        {"no ID in the root",
         Whole({EbmlHeader(), noId, Segment({Info(1), Tracks({Mpeg2Track()}), Cluster(0, {kBlock}), far})}),
         "0 tracks, 0 units"},
        {"no size in the root",
         Whole({EbmlHeader(), noSize, Segment({Info(1), Tracks({Mpeg2Track()}), Cluster(0, {kBlock}), far})}),
         "0 tracks, 0 units"},
        {"in the EBML header",
         Whole({Master(id::kEbml, {Raw(Hex("00")), Str(id::kDocType, "matroska")}),
                Segment({Tracks({Mpeg2Track()}), Cluster(0, {kBlock})})}),
         "0 tracks, 0 units"},
        {"in the Segment, in front of a Cluster", Movie({noId, Cluster(0, {kBlock}), far}),
         "1 track, 0 units"},
        {"in the Segment, 1021 bytes in front of a Cluster",
         Movie({Raw(Bytes(1021)), Cluster(0, {kBlock}), far}), "1 track, 0 units; damaged 3"},
        {"in the Segment, 2042 bytes in front of a Cluster",
         Movie({Raw(Bytes(2042)), Cluster(0, {kBlock}), far}), "1 track, 0 units; damaged 3"},
        {"no size in the Segment", Movie({noSize, Cluster(0, {kBlock}), far}), "1 track, 0 units"},
        {"a Cluster's ID without a size", Movie({Raw(Hex("1F43B67500")), Cluster(0, {kBlock}), far}),
         "1 track, 0 units; damaged 3"},
        {"in Tracks",
         Whole({EbmlHeader(),
                Segment({Tracks({Mpeg2Track(1), noId, Mpeg2Track(2)}), Cluster(0, {kBlock}), far})}),
         "1 track, 1 unit"},
        {"in a TrackEntry", WithTrack({noId, Str(id::kName, "n")}), "1 track, 1 unit"},
        {"in a Cluster", WithBlocks({kBlock, noId, kBlock}), "1 track, 1 unit"},
        {"in a BlockGroup",
         WithBlocks(
             {Master(id::kBlockGroup, {noId, Bin(id::kBlock, BlockBytes(1, 0, 0, Hex("AA")))}), kBlock}),
         "1 track, 1 unit"},
        {"in the Cues",
         Whole({EbmlHeader(),
                Segment({Tracks({Mpeg2Track()}), Master(id::kCues, {noId, Master(id::kCuePoint, {})}),
                         Cluster(0, {kBlock})})}),
         "1 track, 1 unit"},
    };
    CheckRows(rows);
}

TEST(Structure, DepthAndNumber) {
    const uint64_t million = 1000000;
    const auto head = [](uint64_t listed, uint32_t elementId) {
        return OpenSegment({Master(id::kSeekHead, {Master(id::kSeek, {IdValue(id::kSeekId, elementId),
                                                                      Uint(id::kSeekPosition, listed, 8)})}),
                            Info(1), Tracks({Mpeg2Track()})});
    };
    const uint64_t behindHead = head(0, id::kChapters).size() - OpenSegment({}).size();
    // A nested master that says it is larger than what is left.
    const Bytes deeper = Hex("B61FFFFFFE");
    const auto listed = [&](uint32_t elementId, const Bytes& piece, uint64_t times) {
        return Content{
            Stretch{head(behindHead, elementId)},
            Stretch{Piece({Master(elementId, {}).DeclaredSize(piece.size() * times).SizeWidth(8)})},
            Stretch{piece, times}};
    };
    const Bytes edition =
        Piece({Master(id::kEditionEntry, {Master(id::kChapterAtom, {Uint(id::kChapterUid, 1)})})});
    const Bytes attached = Piece({Master(id::kAttachedFile, {Str(id::kFileName, "a")})});
    Content deepChapters = listed(id::kChapters, deeper, million);
    deepChapters.insert(deepChapters.begin() + 2, Stretch{Hex("45B9 1FFFFFFE")});
    const Row rows[] = {
        {"atoms a million deep", deepChapters, "1 track, 0 units; nested_too_deep 1"},
        {"a million editions", listed(id::kChapters, edition, million),
         "1 track, 0 units; reader_limit 256 and more"},
        {"a million attachments", listed(id::kAttachments, attached, million),
         "1 track, 0 units; reader_limit 256 and more"},
        {"an attachment of 4 GiB",
         listed(id::kAttachments,
                Piece({Master(id::kAttachedFile, {Bin(id::kFileData, Bytes(4)).DeclaredSize(1ull << 32)})}),
                1),
         "1 track, 0 units"},
        {"an attachment's name of 4 GiB",
         listed(id::kAttachments,
                Piece({Master(id::kAttachedFile, {Str(id::kFileName, "a").DeclaredSize(1ull << 32)})}), 1),
         "1 track, 0 units; beyond_source 1"},
        {"a chapter's name of 4 GiB",
         listed(id::kChapters,
                Piece({Master(id::kEditionEntry,
                              {Master(id::kChapterAtom,
                                      {Master(id::kChapterDisplay,
                                              {Str(id::kChapString, "a").DeclaredSize(1ull << 32)})})})}),
                1),
         "1 track, 0 units; beyond_source 1"},
        {"a million TrackEntries",
         {Stretch{OpenSegment({Master(id::kTracks, {}).DeclaredSize(10 * million).SizeWidth(8)})},
          Stretch{Piece({Master(id::kTrackEntry,
                                {Uint(id::kTrackNumber, 1), Uint(id::kTrackType, 1), Bin(id::kVoid, {})})}),
                  million}},
         "0 tracks, 0 units; reader_limit 256 and more"},
        {"a million blocks",
         {Stretch{OpenSegment({Info(1), Tracks({Mpeg2Track()}), Master(id::kCluster, {}).UnknownSize(8)})},
          Stretch{Piece({kBlock}), million}},
         "1 track, 5000 units"},
        {"a TimeSlice in each byte of a group",
         {Stretch{OpenSegment({Info(1), Tracks({Mpeg2Track()}), Master(id::kCluster, {}).UnknownSize(8)})},
          Stretch{Hex("A01FFFFFFE")}, Stretch{Piece({Bin(id::kBlock, BlockBytes(1, 0, 0, Hex("AA")))})},
          Stretch{Hex("E883CC81 01"), 100000}},
         "1 track, 1 unit"},
    };
    CheckRows(rows);
}

TEST(Structure, SeekHeadsAndCues) {
    const auto seek = [](uint32_t elementId, uint64_t position) {
        return Master(id::kSeek, {IdValue(id::kSeekId, elementId), Uint(id::kSeekPosition, position, 8)});
    };
    const auto file = [](const Elements& first) {
        Elements children = first;
        for (const Element& e :
             {Info(1000), Tracks({Mpeg2Track()}), Cluster(0, {kBlock}), Cluster(40, {kBlock})})
            children.push_back(e);
        return Whole({EbmlHeader(), Segment(children)});
    };
    const auto cue = [](const Elements& positions) {
        Elements children = {Uint(id::kCueTime, 0)};
        children.insert(children.end(), positions.begin(), positions.end());
        return Master(id::kCues, {Master(id::kCuePoint, children)});
    };
    const auto at = [](uint64_t position, uint64_t track = 1) {
        return Master(id::kCueTrackPositions,
                      {Uint(id::kCueTrack, track), Uint(id::kCueClusterPosition, position)});
    };
    Elements ring;
    for (int i = 0; i < 3; ++i)
        ring.push_back(SeekHead({{id::kSeekHead, "ring " + std::to_string((i + 1) % 3)}})
                           .Label("ring " + std::to_string(i)));
    const Row rows[] = {
        {"a SeekHead that names itself", file({SeekHead({{id::kSeekHead, "self"}}).Label("self")}),
         "1 track, 2 units"},
        {"three in a ring", file(ring), "1 track, 2 units"},
        {"SeekHead at 2^64-49", file({Master(id::kSeekHead, {seek(id::kSeekHead, 0ull - 49)})}),
         "1 track, 2 units"},
        {"all at 2^64-49",
         file({Master(id::kSeekHead, {seek(id::kCluster, 0ull - 49), seek(id::kCues, 0ull - 49),
                                      seek(id::kChapters, 0ull - 49), seek(id::kAttachments, 0ull - 49)})}),
         "1 track, 2 units"},
        {"Cluster at 2^63", file({Master(id::kSeekHead, {seek(id::kCluster, 1ull << 63)})}),
         "1 track, 2 units"},
        {"Cluster past the end", file({Master(id::kSeekHead, {seek(id::kCluster, 1 << 20)})}),
         "1 track, 0 units"},
        {"Cluster in the SeekHead", file({Master(id::kSeekHead, {seek(id::kCluster, 5)})}),
         "1 track, 0 units"},
        {"an ID of no bytes",
         file({Master(id::kSeekHead,
                      {Master(id::kSeek, {Bin(id::kSeekId, {}), Uint(id::kSeekPosition, 0)})})}),
         "1 track, 2 units"},
        {"an ID of 2^40 bytes",
         file({Master(id::kSeekHead,
                      {Master(id::kSeek, {Bin(id::kSeekId, Hex("1F43B675")).DeclaredSize(1ull << 40)})})}),
         "1 track, 0 units"},
        {"Cues without positions", file({cue({})}), "1 track, 2 units"},
        {"Cues that point at the Segment's start", file({cue({at(0)})}), "1 track, 2 units"},
        {"Cues that point past the end", file({cue({at(1 << 20), at(1ull << 62), at(UINT64_MAX)})}),
         "1 track, 2 units"},
        {"Cues of another track", file({cue({at(0, 2)})}), "1 track, 2 units"},
        {"Cues in a Cluster",
         Whole({EbmlHeader(),
                Segment({Info(1000), Tracks({Mpeg2Track()}), Cluster(0, {cue({at(0)}), kBlock})})}),
         "1 track, 1 unit"},
        {"Cues alone", Whole({EbmlHeader(), Segment({Info(1000), Tracks({Mpeg2Track()}), cue({at(0)})})}),
         "1 track, 0 units"},
        {"Clusters in a Cluster of unknown size in a Segment of unknown size",
         Whole({EbmlHeader(),
                Segment({Info(1), Tracks({Mpeg2Track()}),
                         Cluster(0, {kBlock, Cluster(40, {kBlock}).UnknownSize(1)}).UnknownSize(1)})
                    .UnknownSize(1)}),
         "1 track, 2 units"},
    };
    CheckRows(rows);
}

}  // namespace
}  // namespace testing_support
