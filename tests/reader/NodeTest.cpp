// Walking over elements: children, siblings, ends, the SeekHead shortcut, and recovery in a damaged Segment.
#include "reader/ReaderFixture.h"

#include <sstream>

namespace testing_support {
namespace {

using android::sp;
using reader::CMatroskaNode;

TEST(Node, ElementsAreKnownByTheirIds) {
    EXPECT_STREQ("SimpleBlock", reader::FindElementInfo(id::kSimpleBlock)->name);
    EXPECT_EQ(nullptr, reader::FindElementInfo(0x4243));
    size_t count = 0;
    const reader::ElementInfo* const table = reader::ElementTable(&count);
    EXPECT_LT(100u, count);
    for (size_t i = 0; i < count; ++i) EXPECT_EQ(table + i, reader::FindElementInfo(table[i].id));
}

TEST(Node, WalksChildrenInFileOrderWhateverTheWidthOfTheirSizes) {
    const Document file = Write({Master(
        id::kInfo, {Uint(id::kTimecodeScale, 5).SizeWidth(8).Label("a"),
                    Bin(id::kVoid, Bytes(200)).SizeWidth(4).Label("b"), Str(id::kTitle, "t").Label("c")})});
    OpenFile open(file.bytes);
    const sp<CMatroskaNode> info = open.Root()->Child(id::kInfo, false);
    sp<CMatroskaNode> node = info->Child(0, false);
    for (const char* label : {"a", "b", "c"}) {
        SCOPED_TRACE(label);
        EXPECT_EQ(file.HeaderOf(label), node->HeaderStart());
        EXPECT_EQ(file.DataOf(label), node->DataStart());
        EXPECT_EQ(file.EndOf(label), node->End());
        const uint64_t before = open.source->Reads();
        const bool isLast = std::string(label) == "c";
        EXPECT_EQ(!isLast, node->Next(false));
        if (!isLast) continue;
        EXPECT_EQ(before, open.source->Reads());  // the parent's end is known without a read
    }
}

TEST(Node, AnElementOfUnknownSizeEndsWithTheFile) {
    const Document file = Write(
        {Segment({Master(id::kInfo, {Uint(id::kTimecodeScale, 1)}).UnknownSize(1), Bin(id::kVoid, Bytes(3))})
             .UnknownSize(8)});
    OpenFile open(file.bytes);
    const sp<CMatroskaNode> segment = open.SegmentNode();
    EXPECT_EQ(file.bytes.size(), segment->End());
    const sp<CMatroskaNode> info = segment->Child(id::kInfo, true);
    EXPECT_TRUE(info->HasUnknownSize());
    EXPECT_EQ(file.bytes.size(), info->End());
    EXPECT_FALSE(info->Next(false));
}

TEST(Node, NavigationEndsWithTheParentWhereASizeReachesPastIt) {
    const struct {
        const char* name;
        uint64_t declared;
    } rows[] = {{"past the parent", 400}, {"past the file", 100000}, {"largest", (1ull << 56) - 2}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Document file =
            Write({Master(id::kInfo, {Bin(id::kVoid, Bytes(2)).DeclaredSize(row.declared)}).Label("info"),
                   Bin(id::kVoid, Bytes(1000))});
        OpenFile open(file.bytes);
        const sp<CMatroskaNode> child = open.Root()->Child(0, false)->Child(0, false);
        EXPECT_EQ(row.declared, child->Size());
        EXPECT_EQ(file.EndOf("info"), child->End());
        EXPECT_FALSE(child->Next(false));
    }
}

TEST(Node, EndsPastTheSigned64BitRangeDoNotWrap) {
    Faults faults;
    faults.sizeStatus =
        android::UNKNOWN_ERROR;  // the length is unknown: the root is as long as a file can be
    OpenFile open(Write({Bin(id::kVoid, Bytes(2)).DeclaredSize((1ull << 56) - 2)}).bytes, faults);
    const sp<CMatroskaNode> root = open.Root();
    EXPECT_EQ(INT64_MAX, root->GetLength());
    const sp<CMatroskaNode> child = root->Child(0, false);
    EXPECT_LE(child->End(), static_cast<uint64_t>(INT64_MAX));
    EXPECT_FALSE(child->Next(false));  // nothing can be read there
}

TEST(Node, ABadHeaderEndsTheWalkOutsideASegment) {
    const Document file = Write({Master(id::kInfo, {Uint(id::kTimecodeScale, 1).Label("a"), Raw(Hex("0F00")),
                                                    Raw(Bytes(2000)), Str(id::kTitle, "t")})});
    OpenFile open(file.bytes);
    const sp<CMatroskaNode> node = open.Root()->Child(0, false)->Child(0, false);
    EXPECT_EQ(file.HeaderOf("a"), node->HeaderStart());
    EXPECT_FALSE(node->Next(false));
    EXPECT_EQ(0u, node->Id() + node->Size());  // nothing is known of what could not be read
}

TEST(Node, SeekHeadAnswersForTheSegmentsChildren) {
    const Document file = Write(
        {Segment({SeekHead({{id::kTags, "tags"}, {id::kCues, "late"}, {id::kCues, "early"}}).Label("head"),
                  Master(id::kCues, {Bin(id::kVoid, Bytes(3))}).Label("early"),
                  Bin(id::kVoid, Bytes(30)).Label("tags"),
                  Master(id::kCues, {Bin(id::kVoid, Bytes(3))}).Label("late")})});
    OpenFile open(file.bytes);
    ASSERT_EQ(reader::kOk, open.file.Parse(open.Root().get()));
    const sp<CMatroskaNode> segment = open.SegmentNode();
    EXPECT_EQ(file.HeaderOf("late"), segment->FindPos(id::kCues, 0));  // entry order, not file order
    EXPECT_EQ(file.HeaderOf("late"),
              segment->FindPos(id::kCues, static_cast<int64_t>(file.HeaderOf("late"))));
    EXPECT_EQ(0u, segment->FindPos(id::kCues, static_cast<int64_t>(file.HeaderOf("late")) + 1));
    EXPECT_EQ(0u, segment->FindPos(id::kChapters, 0));
    EXPECT_EQ(file.HeaderOf("late"), segment->Child(id::kCues, false)->HeaderStart());
    // The entry for Tags names something else: the shortcut is believed and fails.
    EXPECT_EQ(nullptr, segment->Child(id::kTags, true).get());
}

// --- Recovery ---

// A Segment that is a Void, then `damage`, then a readable Void and the end.
Document Damaged(const Bytes& damage, size_t trailing = 3000) {
    return Write({Segment({Bin(id::kVoid, Bytes(1)), Raw(damage).Label("damage"),
                           Bin(id::kVoid, Bytes(trailing)).SizeWidth(2).Label("after")})});
}

// What the walk meets behind the first child: the offset from the damage and the ID, or "end".
std::string MeetsBehindDamage(OpenFile& open, const Document& file) {
    const sp<CMatroskaNode> segment = open.SegmentNode();
    const sp<CMatroskaNode> node = segment != nullptr ? segment->Child(0, false) : nullptr;
    if (node == nullptr || !node->Next(false)) return "end";
    std::ostringstream out;
    out << std::hex << node->Id() << std::dec << " at " << node->HeaderStart() - file.HeaderOf("damage");
    return out.str();
}
std::string MeetsBehindDamage(const Document& file) {
    OpenFile open(file.bytes);
    return MeetsBehindDamage(open, file);
}

// Deliberate: the four bytes at the front of the buffer are compared, not those at the candidate, and the
// walk goes on one byte behind the candidate. So a level-1 element with a size that does not decode is met
// one byte late.
TEST(Resync, ComparesTheFrontOfItsBuffer) {
    const struct {
        const char* name;
        const char* damage;
        const char* met;
    } rows[] = {
        {"Cluster with a bad size", "1F43B675 00", "43b6 at 1"},
        {"Cues with a bad size", "1C53BB6B 00", "53bb at 1"},
        {"SeekHead with a bad size", "114D9B74 00", "4d9b at 1"},
        {"Tags with a bad size", "1254C367 00", "54c3 at 1"},
        {"Chapters with a bad size", "1043A770 00", "43a7 at 1"},
        {"Info with a bad size", "1549A966 00", "49a9 at 1"},
        {"Tracks with a bad size", "1654AE6B 00", "54ae at 1"},
        {"Attachments with a bad size", "1941A469 00", "41a4 at 1"},
        {"an ID that is not level 1", "1A45DFA3 00", "end"},
        {"one byte of damage before a Cluster", "00 1F43B675 84 E7 81 00 00", "end"},
        {"a candidate behind other bytes", "0000 1F43B675 84 E7 81 00 00", "end"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.met, MeetsBehindDamage(Damaged(Hex(row.damage))));
    }
}

TEST(Resync, GoesOnInStepsOf1021Bytes) {
    const struct {
        size_t offset;
        const char* met;
    } rows[] = {
        {1020, "end"},          {1021, "43b6 at 1022"},       {1022, "end"},
        {2042, "43b6 at 2043"}, {1021 * 10, "43b6 at 10211"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.offset);
        EXPECT_EQ(row.met,
                  MeetsBehindDamage(Damaged(Concat({Bytes(row.offset), Hex("1F43B675 84 E7820000")}))));
    }
}

TEST(Resync, GivesUpBeyondItsBoundAndAtTheEnd) {
    // 5135 steps examine 5,242,835 bytes and go on; the next step is past 5,242,879.
    EXPECT_EQ("43b6 at 5242836",
              MeetsBehindDamage(Damaged(Concat({Bytes(1021 * 5135), Hex("1F43B67584E7820000")}))));
    EXPECT_EQ("end", MeetsBehindDamage(Damaged(Concat({Bytes(1021 * 5136), Hex("1F43B67584E7820000")}))));
    // A buffer that cannot be filled ends the search, also where the bytes would have matched.
    EXPECT_EQ("end", MeetsBehindDamage(Damaged(Hex("1F43B675 00"), 1000)));
}

TEST(Resync, WhatASourceDidNotGiveOnceIsSearchedAgain) {
    constexpr size_t kEndsWithTheWindow = 1024 - 9 - 3;  // behind the Cluster and a Void's header
    for (const size_t trailing : {size_t{3000}, kEndsWithTheWindow}) {
        const Document file = Damaged(Concat({Bytes(1021 * 3), Hex("1F43B67584E7820000")}), trailing);
        OpenFile sound(file.bytes);
        EXPECT_EQ("43b6 at 3064", MeetsBehindDamage(sound, file));
        for (uint64_t call = 0; call < sound.source->Reads(); ++call) {
            Faults faults;
            faults.errorAtCall = call;
            OpenFile open(file.bytes, faults);
            MeetsBehindDamage(open, file);
            EXPECT_EQ("43b6 at 3064", MeetsBehindDamage(open, file)) << trailing << ", read " << call;
        }
    }
}

TEST(Resync, TheWalkContinuesBehindWhatWasFound) {
    // 1F 43B6 75..: the found element takes its size from the bytes behind its ID.
    const Document file = Write({Segment({Bin(id::kVoid, Bytes(1)), Raw(Hex("1F43B67500")).Label("damage"),
                                          Raw(Bytes(0x3500)), Bin(id::kVoid, Bytes(9)).Label("good")})});
    OpenFile open(file.bytes);
    const sp<CMatroskaNode> node = open.SegmentNode()->Child(0, false);
    ASSERT_TRUE(node->Next(false));
    EXPECT_EQ(0x43B6u, node->Id());
    EXPECT_EQ(0x3500u, node->Size());
    ASSERT_TRUE(node->Next(false));
    EXPECT_EQ(file.HeaderOf("good"), node->HeaderStart());
}

// --- Clusters of unknown size ---

TEST(OpenCluster, EndsWhereALevelOneElementBegins) {
    const Elements blocks = {SimpleBlock(1, 0, kKeyFrame, Hex("01")), BlockGroup(1, 1, Hex("02"))};
    for (const Element& next : {Cluster(7, {}), Master(id::kCues, {Bin(id::kVoid, Bytes(3))}),
                                Master(id::kTags, {Bin(id::kVoid, Bytes(3))})}) {
        const Document file = Write(
            {Segment({Cluster(0, blocks).UnknownSize(8).Label("open"), next.Label("next")}).UnknownSize(8)});
        OpenFile open(file.bytes);
        const sp<CMatroskaNode> cluster = open.SegmentNode()->Child(id::kCluster, true);
        EXPECT_EQ(file.bytes.size() - file.DataOf("open"), cluster->Size());
        const sp<CMatroskaNode> block = cluster->GetFirstBlock();
        EXPECT_EQ(id::kSimpleBlock, block->Id());
        ASSERT_TRUE(block->NextBlock());
        EXPECT_EQ(id::kBlockGroup, block->Id());
        EXPECT_FALSE(block->NextBlock());
        ASSERT_TRUE(cluster->Next(false));
        EXPECT_EQ(file.HeaderOf("next"), cluster->HeaderStart());
    }
}

TEST(OpenCluster, AKnownSizeIsWalkedAsItSays) {
    // A Cluster inside a Cluster of known size stays a child.
    const Document file = Write({Segment({Cluster(0, {SimpleBlock(1, 0, 0, Hex("01")), Cluster(1, {}),
                                                      SimpleBlock(1, 1, 0, Hex("02")).Label("behind")})})});
    OpenFile open(file.bytes);
    const sp<CMatroskaNode> cluster = open.SegmentNode()->Child(id::kCluster, true);
    const sp<CMatroskaNode> block = cluster->GetFirstBlock();
    ASSERT_TRUE(block->NextBlock());
    EXPECT_EQ(file.HeaderOf("behind"), block->HeaderStart());
    EXPECT_FALSE(cluster->Next(false));
}

}  // namespace
}  // namespace testing_support
