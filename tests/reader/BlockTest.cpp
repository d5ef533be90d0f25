// Block headers, the three lacings and the ways of reading a block.
#include "reader/BlockFixture.h"

#include <cstring>

namespace testing_support {
namespace {

using Sizes = std::vector<uint64_t>;

TEST(Block, Header) {
    const struct {
        const char* name;
        const char* block;
        uint64_t track;
        int64_t timecode;
        uint8_t flags;
        uint64_t dataOffset, dataSize;
    } rows[] = {
        {"one-byte track", "81 0005 80 AABB", 1, 5, 0x80, 4, 2},
        {"negative timecode", "82 FFFB 00 AA", 2, -5, 0, 4, 1},
        {"extreme timecode", "81 8000 0F AA", 1, -32768, 0x0F, 4, 1},
        {"two-byte track", "4123 7FFF 81 AABBCC", 0x123, 32767, 0x81, 5, 3},
        {"eight-byte track", "0100000000000001 0000 00 AA", 1, 0, 0, 11, 1},
        {"no payload", "81 0000 00", 1, 0, 0, 4, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        OneBlock one(Mpeg2Track(), Bin(id::kSimpleBlock, Hex(row.block)));
        EXPECT_EQ(row.track, one.Block().TrackNumber.Get());
        EXPECT_EQ(row.timecode, one.Block().TimeCode.Get());
        EXPECT_TRUE(one.Block().TimeCode.IsSet());
        EXPECT_EQ(row.flags, one.Block().Flags.Get());
        EXPECT_EQ(one.node->DataStart() + row.dataOffset, one.Block().DataPosition);
        EXPECT_EQ(row.dataSize, one.Block().DataSize);
    }
}

TEST(Block, ShorterThanItsHeaderItHasNoData) {
    for (const char* bytes : {"", "81", "8100", "810000", "00", "4000"}) {
        SCOPED_TRACE(bytes);
        for (bool last : {false, true}) {
            OneBlock one(
                Mpeg2Track(),
                last ? Bin(id::kSimpleBlock, Hex(bytes))
                     : Raw(Write({Bin(id::kSimpleBlock, Hex(bytes)), Bin(id::kVoid, Bytes(30))}).bytes));
            EXPECT_EQ(0u, one.Block().DataSize);
            const std::string delivered = one.Deliver();
            EXPECT_TRUE(delivered.empty() || delivered == "refused") << delivered;
        }
    }
}

std::vector<Bytes> Frames(const std::vector<size_t>& sizes) {
    std::vector<Bytes> frames;
    for (size_t i = 0; i < sizes.size(); ++i)
        frames.push_back(Pattern(sizes[i], static_cast<uint8_t>(i + 1)));
    return frames;
}

Sizes SizesOf(const std::vector<Bytes>& frames) {
    Sizes sizes;
    for (const Bytes& frame : frames) sizes.push_back(frame.size());
    return sizes;
}

// What each kind of track makes of a laced block: everything in one piece, a prefix in front of each frame,
// or one frame a read.
void ExpectEveryPath(Lacing lacing, const std::vector<Bytes>& frames) {
    const Element block = SimpleBlock(1, 0, kKeyFrame, lacing, frames);
    OneBlock plain(Mpeg2Track(), block);
    EXPECT_EQ(SizesOf(frames), plain.Sizes());
    OneBlock whole(Mpeg2Track(), block);
    EXPECT_EQ(whole.Block().DataSize, whole.Block().GetSize(whole.node.get(), whole.entry));
    EXPECT_EQ(ToHex(Concat(frames)), whole.Deliver());

    std::string prefixed;
    for (const Bytes& frame : frames) prefixed += "cafe" + ToHex(frame);
    OneBlock stripped(EncodedTrack({Encoding(0, 0, 3, Hex("CAFE"))}), block);
    EXPECT_EQ(prefixed, stripped.Deliver());
    EXPECT_EQ("refused", stripped.DeliverInto(static_cast<uint32_t>(prefixed.size() / 2 - 1)));

    OneBlock vorbis(Track(1, kAudioType, "A_VORBIS"), block);
    for (const Bytes& frame : frames) {
        EXPECT_EQ(frame.size(), vorbis.Block().GetSize(vorbis.node.get(), vorbis.entry));
        EXPECT_EQ(ToHex(frame), vorbis.Deliver());
    }
    EXPECT_TRUE(vorbis.Block().DecodedFrames.empty());
}

TEST(Lacing, EveryPathDeliversEveryFrame) {
    const struct {
        Lacing lacing;
        std::vector<size_t> sizes;
    } rows[] = {
        {Lacing::kNone, {5}},
        {Lacing::kXiph, {7}},
        {Lacing::kXiph, {3, 300, 5}},
        {Lacing::kXiph, {254, 255, 256, 510, 1}},
        {Lacing::kXiph, {0, 0, 4}},
        {Lacing::kFixed, {9}},
        {Lacing::kFixed, {4, 4, 4}},
        {Lacing::kFixed, std::vector<size_t>(255, 2)},
        {Lacing::kEbml, {3, 300}},
        {Lacing::kEbml, {300, 3, 126, 127, 128, 20000, 1}},
        {Lacing::kEbml, {0, 5, 0, 5}},
        {Lacing::kXiph, std::vector<size_t>(256, 1)},
        {Lacing::kEbml, std::vector<size_t>(256, 1)},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE("lacing " + std::to_string(static_cast<int>(row.lacing)) + ", frames " +
                     std::to_string(row.sizes.size()));
        ExpectEveryPath(row.lacing, Frames(row.sizes));
    }
}

struct LacingRow {
    const char* name;
    uint8_t flags;
    const char* payload;
    Sizes sizes;
    const char* delivered;
};

// Deliberate oddities of the counts, on hand-made payloads.
TEST(Lacing, OddCounts) {
    const LacingRow rows[] = {
        {"fixed, a remainder that is never delivered", 0x04, "02 0102030405060708", Sizes(3, 2),
         "010203040506"},
        {"fixed, fewer bytes than frames", 0x04, "04 010203", Sizes(5, 0), ""},
        {"fixed, count 255 wraps to no frames", 0x04, "FF 010203", {}, ""},
        {"no lacing, no data", 0x00, "", Sizes{0}, ""},
    };
    for (const LacingRow& row : rows) {
        SCOPED_TRACE(row.name);
        const Element block = SimpleBlock(1, 0, row.flags, Hex(row.payload));
        OneBlock sizes(Mpeg2Track(), block);
        EXPECT_EQ(row.sizes, sizes.Sizes());
        OneBlock whole(Mpeg2Track(), block);
        EXPECT_EQ(row.delivered, whole.Deliver());
        OneBlock vorbis(Track(1, kAudioType, "A_VORBIS"), block);
        EXPECT_EQ(std::string(row.delivered).substr(0, row.sizes.empty() ? 0 : 2 * row.sizes[0]),
                  vorbis.Deliver());
    }
}

// Deliberate: the count of differences is kept in eight bits, so one EBML-laced frame is read as 257 sizes.
TEST(Lacing, EbmlCountZeroReads255Differences) {
    const Bytes payload = Concat({Hex("00 80"), Bytes(255, 0xBF), Hex("AABB")});
    const Element block = SimpleBlock(1, 0, 0x06, payload);
    OneBlock sizes(Mpeg2Track(), block);
    Sizes expected(256, 0);
    expected.push_back(2);
    EXPECT_EQ(expected, sizes.Sizes());
    OneBlock whole(Mpeg2Track(), block);
    EXPECT_EQ("aabb", whole.Deliver());
    OneBlock stripped(EncodedTrack({Encoding(0, 0, 3, Hex("11"))}), block);
    std::string prefixed;
    for (int i = 0; i < 257; ++i) prefixed += "11";
    EXPECT_EQ(prefixed + "aabb", stripped.Deliver());
}

// A block of which one lace does not fit is refused whole where its sizes are needed. Where all frames come
// as one, what stands behind the lacing header comes, unless that passes the end of the block.
TEST(Lacing, SizesThatDoNotFitAreRefusedWhereTheyAreNeeded) {
    const struct {
        const char* name;
        uint8_t flags;
        const char* payload;
        const char* plain;
    } rows[] = {
        {"Xiph sum past the block", 0x02, "02 05 05 0102030405060708", "0102030405060708"},
        {"Xiph 255 of nothing", 0x02, "01 FF00", ""},
        {"Xiph run of FF to the end", 0x02, "01 FFFFFFFFFFFF", "refused"},
        {"Xiph, no room for the sizes", 0x02, "FF 010101", "refused"},
        {"Xiph, no count", 0x02, "", "refused"},
        {"EBML first size past the block", 0x06, "01 88 0102", "0102"},
        {"EBML difference below zero", 0x06, "02 81 80 0102030405", "0102030405"},
        {"EBML size that does not decode", 0x06, "01 00 0102", "0102"},
        {"EBML difference that does not decode", 0x06, "02 81 00 0102", "0102"},
        {"EBML sum past the block", 0x06, "02 84 C4 0102030405", "0102030405"},
        {"EBML differences near 2^55", 0x06, "03 81 01FFFFFFFFFFFFFE 01FFFFFFFFFFFFFE 0102", "0102"},
        {"EBML size that passes the block", 0x06, "01 0102", "refused"},
        {"EBML, no count", 0x06, "", "refused"},
        {"fixed, no count", 0x04, "", "refused"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Element block = SimpleBlock(1, 0, row.flags, Hex(row.payload));
        for (const Element& track : {EncodedTrack({Encoding(0, 0, 3, Hex("11"))}),
                                     Track(1, kAudioType, "A_VORBIS"), EncodedTrack({Encoding(0, 0, 0)})}) {
            EXPECT_EQ("refused", OneBlock(track, block).Deliver());
        }
        EXPECT_EQ(row.plain, OneBlock(Mpeg2Track(), block).Deliver());
    }
}

// A head has 16 bits for the length of the sizes and 8 for that of what no frame has.
TEST(BlockHead, KnowsWhatItHasRoomFor) {
    const struct {
        Lacing lacing;
        size_t lacingBytes, bytesBehind;
        bool isKnown;
    } rows[] = {{Lacing::kXiph, 65535, 0, true},
                {Lacing::kXiph, 65536, 0, false},
                {Lacing::kFixed, 1, 255, true},
                {Lacing::kFixed, 1, 256, false}};
    for (const auto& row : rows) {
        Bytes bytes(row.lacingBytes + row.bytesBehind, 0xFF);  // a lace count of 255 is none of fixed size
        if (row.lacing == Lacing::kXiph) bytes[0] = 1, bytes.back() = 0;
        reader::BlockHeader header = {};
        header.flags = static_cast<uint8_t>(row.lacing) << 1;
        header.dataSize = bytes.size();
        reader::BlockHead head = reader::BlockHead::OfSimpleBlock(header);
        head.LookAtLacing({bytes.data(), static_cast<uint32_t>(bytes.size()), 0});
        EXPECT_EQ(row.isKnown, head.knowsFrames);
        EXPECT_EQ(row.isKnown ? row.lacingBytes : 0, head.lacingBytes);
        EXPECT_EQ(row.isKnown ? row.bytesBehind : 0, head.bytesBehind);
    }
}

TEST(Block, InAGroupTheLacingEndsWithTheBlockItself) {
    const std::vector<Bytes> frames = Frames({3, 4, 5});
    for (Lacing lacing : {Lacing::kXiph, Lacing::kEbml}) {
        const Element group =
            Master(id::kBlockGroup, {Bin(id::kBlock, BlockBytes(1, 0, 0, lacing, frames)),
                                     Uint(id::kBlockDuration, 7), Bin(id::kVoid, Bytes(40))});
        OneBlock sizes(Mpeg2Track(), group);
        EXPECT_EQ((Sizes{3, 4, 5}), sizes.Sizes());
        OneBlock whole(Mpeg2Track(), group);
        EXPECT_EQ(ToHex(Concat(frames)), whole.Deliver());
        OneBlock vorbis(Track(1, kAudioType, "A_VORBIS"), group);
        for (const Bytes& frame : frames) EXPECT_EQ(ToHex(frame), vorbis.Deliver());
    }
}

TEST(Block, GroupsKeepTheLastReferenceAndTheirDuration) {
    OneBlock one(Mpeg2Track(), BlockGroup(1, 0, Hex("01"),
                                          {Int(id::kReferenceBlock, -40, 1), Int(id::kReferenceBlock, 300, 2),
                                           Uint(id::kBlockDuration, 25), Uint(id::kReferencePriority, 3),
                                           Master(id::kTimeSlice, {Uint(id::kLaceNumber, 4)})}));
    EXPECT_EQ(300, one.group->ReferenceBlock.Get());
    EXPECT_FALSE(one.group->IsKeyFrame());
    EXPECT_EQ(25u, one.group->BlockDuration.Get());
    EXPECT_EQ(3u, one.group->ReferencePriority.Get());
    ASSERT_EQ(1u, one.group->TimeSlices.size());
    EXPECT_EQ(4u, one.group->TimeSlices[0]->LaceNumber.Get());
    OneBlock sliced(Mpeg2Track(), BlockGroup(1, 0, Hex("01"),
                                             Elements(reader::limit::kTimeSlices + 1,
                                                      Master(id::kTimeSlice, {Uint(id::kLaceNumber, 4)}))));
    EXPECT_EQ(reader::limit::kTimeSlices, sliced.group->TimeSlices.size());

    OneBlock key(Mpeg2Track(), BlockGroup(1, 0, Hex("01")));
    EXPECT_TRUE(key.group->IsKeyFrame());
    EXPECT_FALSE(key.group->BlockDuration.IsSet());
}

TEST(Block, SizesPastTheClusterAreReadWholeAndPastTheSourceRefused) {
    const Bytes frame = Pattern(10, 3);
    const Element longer = SimpleBlock(1, 0, kKeyFrame, frame).DeclaredSize(4 + 15);
    for (bool known : {true, false}) {
        SCOPED_TRACE(known);
        Faults faults;
        if (!known) faults.sizeStatus = android::UNKNOWN_ERROR;
        const Document file =
            Write({EbmlHeader(), Segment({Info(1), Master(id::kTracks, {Mpeg2Track()}), Cluster(0, {longer}),
                                          Bin(id::kVoid, Hex("0102030405"))})});
        InitialisedFile open(file, faults);
        const auto node = open.SegmentNode()->Child(id::kCluster, true)->GetFirstBlock();
        reader::SimpleBlock block;
        block.Parse(node.get());
        ASSERT_EQ(15u, block.GetSize(node.get(), open.file.FindTrack(1)));
        Bytes out(15);
        long length = 15;
        EXPECT_EQ(reader::kOk, block.Read(node.get(), open.file.FindTrack(1), out.data(), length, 0));
        EXPECT_EQ(ToHex(Concat({frame, Hex("EC85010203")})), ToHex(out));

        OneBlock cut(Mpeg2Track(), longer, faults);
        EXPECT_EQ(0u, cut.Block().GetSize(cut.node.get(), cut.entry));
        EXPECT_EQ("refused", cut.Deliver());
        OneBlock huge(Mpeg2Track(), SimpleBlock(1, 0, 0, frame).DeclaredSize((1ull << 40) + 4), faults);
        EXPECT_EQ("refused", huge.Deliver());
    }
}

TEST(Block, ALargeFrameIsReadInOneGoWhereTheLengthIsKnown) {
    for (const bool isKnown : {true, false}) {
        Faults faults;
        if (!isKnown) faults.sizeStatus = android::UNKNOWN_ERROR;
        OneBlock one(Mpeg2Track(), SimpleBlock(1, 0, 0, Bytes(3 << 20)), faults);
        const uint64_t before = one.source->Reads();
        EXPECT_EQ(size_t{6} << 20, one.Deliver().size());
        EXPECT_EQ(isKnown ? 1u : 2u, one.source->Reads() - before);
    }
}

TEST(Block, OnTheStrippingPathReadNeedsTheSizesFirst) {
    OneBlock one(EncodedTrack({Encoding(0, 0, 3, Hex("1122"))}), SimpleBlock(1, 0, 0, Hex("010203")));
    EXPECT_EQ("", one.DeliverInto(100));
    EXPECT_EQ("1122010203", one.Deliver());
}

// --- RealMedia ---

TEST(RealMedia, AudioFramesGetARecordHeader) {
    const std::vector<Bytes> frames = {Hex("AABBCC"), Hex("DDEE")};
    OneBlock one(Track(1, kAudioType, "A_REAL/COOK"), SimpleBlock(1, -2, 0, Lacing::kXiph, frames));
    ASSERT_EQ(16u * 2 + 5, one.Block().GetSize(one.node.get(), one.entry));
    Bytes out(37);
    long length = 37;
    ASSERT_EQ(reader::kOk, one.Block().Read(one.node.get(), one.entry, out.data(), length, 1000));
    EXPECT_EQ(37, length);
    size_t at = 0;
    for (const Bytes& frame : frames) {
        uint32_t time = 0, address = 0;
        uint16_t size = 0;
        std::memcpy(&time, &out[at], 4);
        std::memcpy(&size, &out[at + 10], 2);
        std::memcpy(&address, &out[at + 12], 4);
        EXPECT_EQ(998u, time);
        EXPECT_EQ("000000000000", ToHex(&out[at + 4], 6));
        EXPECT_EQ(frame.size(), size);
        EXPECT_EQ(static_cast<uint32_t>(reinterpret_cast<uintptr_t>(&out[at + 16])), address);
        EXPECT_EQ(ToHex(frame), ToHex(&out[at + 16], frame.size()));
        at += 16 + frame.size();
    }
    EXPECT_EQ("refused", one.DeliverInto(36));
    EXPECT_EQ("refused", one.DeliverInto(34));
}

// Deliberate: room for a header is asked for, none is written.
TEST(RealMedia, VideoFramesGetNone) {
    OneBlock one(Track(1, kVideoType, "V_REAL/RV40"),
                 SimpleBlock(1, 0, 0, Lacing::kXiph, {Hex("AABBCC"), Hex("DD")}));
    EXPECT_EQ(2 * 27u + 4, one.Block().GetSize(one.node.get(), one.entry));
    EXPECT_EQ("aabbccdd", one.Deliver());
    EXPECT_EQ("refused", one.DeliverInto(3));
}

// --- Clusters ---

TEST(Cluster, OnlyTheFirstTimecodeCounts) {
    const Document file = Write(
        {Segment({Master(id::kCluster, {SimpleBlock(1, 0, 0, Hex("01")), Uint(id::kClusterTimecode, 300),
                                        Uint(id::kClusterTimecode, 400)}),
                  Master(id::kCluster, {SimpleBlock(1, 0, 0, Hex("01"))}), Master(id::kCluster, {})})});
    OpenFile open(file.bytes);
    const auto node = open.SegmentNode()->Child(id::kCluster, true);
    const android::sp<reader::Cluster> cluster = new reader::Cluster;
    EXPECT_EQ(reader::kOk, cluster->ParseTimeCode(node.get()));
    EXPECT_EQ(300u, cluster->Timecode.Get());
    ASSERT_TRUE(node->Next(true));
    EXPECT_EQ(reader::kOk, cluster->ParseTimeCode(node.get()));
    EXPECT_EQ(300u, cluster->Timecode.Get());  // none there: left alone
    ASSERT_TRUE(node->Next(true));
    EXPECT_EQ(reader::kFailure, cluster->ParseTimeCode(node.get()));
    EXPECT_EQ(reader::kNullNode, cluster->ParseTimeCode(nullptr));
}

TEST(Cluster, AFullParseKeepsItsBlocks) {
    OpenFile open(
        Write({Segment({Cluster(5, {SimpleBlock(1, 0, 0, Hex("01")), BlockGroup(2, 1, Hex("02")),
                                    SimpleBlock(3, 2, 0, Hex("03")), Uint(id::kClusterPrevSize, 77)})})})
            .bytes);
    ASSERT_EQ(reader::kOk, open.Model().Parse(open.SegmentNode().get()));
    const reader::Cluster& cluster = *open.Model().Clusters[0];
    ASSERT_EQ(2u, cluster.SimpleBlocks.size());
    ASSERT_EQ(1u, cluster.BlockGroups.size());
    EXPECT_EQ(3u, cluster.SimpleBlocks[1]->TrackNumber.Get());
    EXPECT_EQ(2u, cluster.BlockGroups[0]->Block.TrackNumber.Get());
    EXPECT_EQ(77u, cluster.PrevSize.Get());
}

TEST(BlockRuns, ARunBehindAFullOneHasTheRest) {
    OpenFile open(Write({Segment({Cluster(
                            5, Elements(reader::BlockRun::kBlocks + 1, SimpleBlock(1, 0, 0, Hex("01"))))})})
                      .bytes);
    const auto cluster = open.SegmentNode()->Child(id::kCluster, true);
    const auto first = open.file.Blocks.First(cluster.get());
    ASSERT_TRUE(first->Reach(reader::BlockRun::kBlocks - 1));
    const auto last = open.file.Blocks.After(*first);
    EXPECT_TRUE(last->Reach(0));
    EXPECT_FALSE(last->Reach(1));
}

// One more than there are sets of runs, so that two have to share one.
TEST(BlockRuns, ThoseInUseSideBySideStay) {
    OpenFile open(Write({Segment(Elements(17, Cluster(5, {SimpleBlock(1, 0, 0, Hex("01"))})))}).bytes);
    std::vector<android::sp<reader::CMatroskaNode>> clusters = {
        open.SegmentNode()->Child(id::kCluster, true)};
    for (auto next = clusters[0]->Copy(); next->Next(true);) clusters.push_back(next->Copy());
    ASSERT_EQ(17u, clusters.size());
    for (const auto& cluster : clusters) EXPECT_TRUE(open.file.Blocks.First(cluster.get())->Reach(0));
    const uint64_t before = open.source->Reads();
    for (const auto& cluster : clusters) EXPECT_TRUE(open.file.Blocks.First(cluster.get())->Reach(0));
    EXPECT_EQ(before, open.source->Reads());
}

TEST(BlockRuns, OneThatEndedForWantOfReadsIsForgotten) {
    OpenFile open(Write({Segment({Cluster(5, {SimpleBlock(1, 0, 0, Hex("01"))})})}).bytes);
    const auto cluster = open.SegmentNode()->Child(id::kCluster, true);
    {
        const reader::CMatroskaFile::Opening opening(&open.file);
        uint8_t byte;
        while (open.file.Take(&byte, 1)) open.file.SeekTo(0);  // bounded by what opening may ask for
        EXPECT_FALSE(open.file.Blocks.First(cluster.get())->Reach(0));
    }
    EXPECT_TRUE(open.file.Blocks.First(cluster.get())->Reach(0));
}

TEST(BlockAdditions, DefaultIdAndBytes) {
    OpenFile open(
        Write({Master(id::kBlockAdditions, {Master(id::kBlockMore, {Bin(id::kBlockAdditional, Hex("AB"))}),
                                            Master(id::kBlockMore, {Uint(id::kBlockAddId, 4)})})})
            .bytes);
    reader::BlockAdditions additions;
    ASSERT_EQ(reader::kOk, additions.Parse(open.Root()->Child(0, false).get()));
    ASSERT_EQ(2u, additions.size());
    EXPECT_EQ(1, additions[0]->BlockAddID.Get());
    EXPECT_EQ("ab", Show(additions[0]->BlockAdditional));
    EXPECT_EQ(4, additions[1]->BlockAddID.Get());
}

}  // namespace
}  // namespace testing_support
