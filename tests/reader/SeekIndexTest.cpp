// The sync index: from Cues, from a visit of every Cluster, and its order.
#include "reader/ReaderFixture.h"

#include <algorithm>
#include <cmath>
#include <random>

#include "matroska/reader/OrderedSearch.h"
#include "matroska/reader/PlainCues.h"

namespace testing_support {
namespace {

using Index = std::vector<std::pair<int64_t, uint64_t>>;

Element Point(uint64_t time, uint64_t track, uint64_t position) {
    return Master(id::kCuePoint, {Uint(id::kCueTime, time),
                                  Master(id::kCueTrackPositions, {Uint(id::kCueTrack, track),
                                                                  Uint(id::kCueClusterPosition, position)})});
}

Document WithCues(std::vector<Elements> cues, uint64_t timecodeScale = 1000000) {
    Elements children = {Info(100, timecodeScale)};
    for (const Elements& points : cues) children.push_back(Master(id::kCues, points));
    children.push_back(Master(id::kTracks, {Track(1, 1, "V_MPEG2"), Track(2, 2, "A_AAC")}));
    return Write({EbmlHeader(), Segment(children)});
}

Index IndexOf(OpenFile& open) {
    open.file.BuildIndexForSync();
    Index index;
    for (size_t i = 0; i < open.file.Index().size(); ++i)
        index.push_back({open.file.Index()[i].Time, open.file.Index()[i].Position});
    return index;
}

TEST(SeekIndex, FromCues) {
    const Element twoPositions =
        Master(id::kCuePoint,
               {Uint(id::kCueTime, 5),
                Master(id::kCueTrackPositions, {Uint(id::kCueTrack, 2), Uint(id::kCueClusterPosition, 51)}),
                Master(id::kCueTrackPositions, {Uint(id::kCueTrack, 1), Uint(id::kCueClusterPosition, 52)})});
    const struct {
        const char* name;
        std::vector<Elements> cues;
        uint64_t scale;
        Index index;
    } rows[] = {
        {"in order", {{Point(0, 1, 10), Point(2, 1, 20)}}, 1000000, {{0, 10}, {2000, 20}}},
        {"out of order",
         {{Point(2, 1, 20), Point(0, 1, 10), Point(1, 1, 15)}},
         1000000,
         {{0, 10}, {1000, 15}, {2000, 20}}},
        {"the track is not asked", {{Point(1, 2, 10), Point(2, 99, 20)}}, 1000000, {{1000, 10}, {2000, 20}}},
        {"equal times: the later in the file first",
         {{Point(1, 1, 10), Point(1, 1, 20), Point(1, 1, 30)}},
         1000000,
         {{1000, 30}, {1000, 20}, {1000, 10}}},
        {"two Cues: each in reverse, one behind the other",
         {{Point(1, 1, 10), Point(1, 1, 11)}, {Point(1, 1, 20), Point(0, 1, 21)}},
         1000000,
         {{0, 21}, {1000, 11}, {1000, 10}, {1000, 20}}},
        {"only the first position of a point counts", {{twoPositions}}, 1000000, {{5000, 51}}},
        {"truncating division", {{Point(1, 1, 10), Point(3, 1, 20)}}, 1999, {{1, 10}, {5, 20}}},
        {"the product wraps", {{Point(5, 1, 10), Point((1ull << 62) + 1, 1, 20)}}, 4000, {{4, 20}, {20, 10}}},
        {"in one microsecond", {{Point(2, 1, 10), Point(3, 1, 20)}}, 500, {{1, 20}, {1, 10}}},
        {"one names no place",
         {{Point(1, 1, 10), Master(id::kCuePoint, {Uint(id::kCueTime, 2)}), Point(3, 1, 30)}},
         1000000,
         {{1000, 10}, {3000, 30}}},
        {"scale 0", {{Point(7, 1, 10)}}, 0, {{0, 10}}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        InitialisedFile open(WithCues(row.cues, row.scale));
        EXPECT_EQ(row.index, IndexOf(open));
    }
}

// The order must be the one that a stable insertion gives, however many entries there are. An insertion
// itself would not be through with so many before the test is given up.
TEST(SeekIndex, LargeIndexesKeepTheStableOrder) {
    InitialisedFile open(WithCues({}));
    reader::AutoPtr<reader::Cue> cue = new reader::Cue;
    Index expected;
    for (uint64_t i = 0; i < 1000000; ++i) {
        const uint64_t time = i * 7919 % 1009;
        cue->AddPoint(time, 1, i);
        expected.push_back({static_cast<int64_t>(time * 1000), i});
    }
    open.Model().Cues.Append(cue);
    std::reverse(expected.begin(), expected.end());
    std::stable_sort(expected.begin(), expected.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    EXPECT_TRUE(expected == IndexOf(open));
}

// An ordered list is cut at the target; one whose times may wrap is not.
TEST(SeekIndex, CuePointsInFrontOfATimeAreCounted) {
    const uint64_t large = uint64_t{1} << 62;
    const struct {
        const char* name;
        uint64_t scale;
        std::vector<uint64_t> times;
        uint64_t timeUs;
        size_t count;
    } rows[] = {
        {"in order", 1000000, {0, 1, 2, 3, 9}, 2000, 3},
        {"just in front", 1000000, {0, 1, 2, 3, 9}, 1999, 2},
        {"of equal times all", 1000000, {0, 2, 2, 2, 9}, 2000, 4},
        {"in front of the first", 1000000, {5, 6}, 4999, 0},
        {"behind the last", 1000000, {5, 6}, 6000, 2},
        {"rounded down", 1999, {0, 1, 2, 3}, 1, 2},
        {"a target that would wrap", 1000000, {0, 1}, UINT64_MAX, 2},
        {"the latest that does not wrap", 1000000, {0, UINT64_MAX / 1000000}, 0, 1},
        {"times that may wrap: all", 4000, {0, large + 5}, 15, 2},
        {"scale 0", 0, {0, 7}, 0, 2},
        {"out of order: all", 1000000, {9, 0}, 1, 2},
        {"none", 1000000, {}, 1, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        InitialisedFile open(WithCues({}, row.scale));
        reader::AutoPtr<reader::Cue> cue = new reader::Cue;
        for (const uint64_t time : row.times) cue->AddPoint(time, 1, 0);
        open.Model().Cues.Append(cue);
        open.file.BuildIndexForSync();
        EXPECT_EQ(row.count, open.file.CountCuePointsUpTo(*open.Model().Cues[0], row.timeUs));
    }
}

// Which points are taken from memory, of two of a kind.
TEST(PlainCues, WhatIsPlain) {
    const Element track = Uint(id::kCueTrack, 1), cluster = Uint(id::kCueClusterPosition, 300),
                  time = Uint(id::kCueTime, 7), place = Master(id::kCueTrackPositions, {track, cluster});
    const struct {
        const char* name;
        Element point;
        bool isPlain;
    } rows[] = {
        {"usual", Master(id::kCuePoint, {time, place}), true},
        {"numbers of eight bytes", Master(id::kCuePoint, {Uint(id::kCueTime, 7, 8), place}), true},
        {"of nine", Master(id::kCuePoint, {Bin(id::kCueTime, Bytes(9)), place}), false},
        {"of none", Master(id::kCuePoint, {Bin(id::kCueTime, {}), place}), true},
        {"two places", Master(id::kCuePoint, {place, time, place}), true},
        {"no place", Master(id::kCuePoint, {time}), true},
        {"an empty one", Master(id::kCuePoint, {time, Master(id::kCueTrackPositions, Elements{})}), false},
        {"long sizes", Master(id::kCuePoint, {time.SizeWidth(8), place}).SizeWidth(3), true},
        {"what nobody reads", Master(id::kCuePoint, {time, Bin(id::kVoid, Bytes(200))}), true},
        {"a place beyond the point", Master(id::kCuePoint, {time, place.DeclaredSize(20)}), false},
        {"a point beyond the bytes", Master(id::kCuePoint, {time}).DeclaredSize(99), false},
        {"unknown size", Master(id::kCuePoint, {time, place}).UnknownSize(1), false},
        {"nothing", Master(id::kCuePoint, Elements{}), false},
        {"something else", Bin(id::kVoid, Bytes(3)), false},
    };
    for (const auto& row : rows) {
        const Bytes bytes = Write({row.point, row.point}).bytes;
        reader::CountedBytes ahead(reader::HeldBytes{bytes.data(), static_cast<uint32_t>(bytes.size()), 0});
        const reader::AutoPtr<reader::Cue> cue = new reader::Cue;
        reader::PlainElement last;
        EXPECT_EQ(row.isPlain ? 2u : 0u, reader::TakePlainPoints(&ahead, 9, 9, cue.get(), &last)) << row.name;
        EXPECT_EQ(row.isPlain ? 2u : 0u, cue->Points.size()) << row.name;
        EXPECT_EQ(row.isPlain ? bytes.data() + bytes.size() : bytes.data(), ahead.next) << row.name;
    }
}

struct RebuiltFile : InitialisedFile {
    explicit RebuiltFile(const Document& document) : InitialisedFile(document) { file.RebuildIndex(); }
};

Elements Head() {
    return {Info(77), Master(id::kTracks, {Track(1, 2, "A_AAC"), Track(4, 1, "V_MPEG2")})};
}
Document Clusters(Elements clusters, bool unknownSegment = false) {
    Elements children = Head();
    children.insert(children.end(), clusters.begin(), clusters.end());
    const Element segment = Segment(children).Label("segment");
    return Write({EbmlHeader(), unknownSegment ? segment.UnknownSize(8) : segment});
}

TEST(SeekIndex, WithoutCuesEveryClusterIsVisited) {
    const Element block = SimpleBlock(4, 0, kKeyFrame, Bytes(40));
    const Element late = Master(id::kCluster, {block, Uint(id::kClusterTimecode, 30)});
    for (bool unknown : {false, true}) {
        SCOPED_TRACE(unknown);
        auto open = [&](const Element& cluster) { return unknown ? cluster.UnknownSize(8) : cluster; };
        const Document file =
            Clusters({open(Cluster(10, {block})).Label("a"), open(Cluster(20, {block})).Label("b"),
                      Bin(id::kVoid, Bytes(5)), open(late).Label("c"),
                      Master(id::kTags, {Bin(id::kVoid, Bytes(5))}), open(Cluster(5, {block})).Label("d")},
                     unknown);
        RebuiltFile rebuilt(file);
        const uint64_t base = file.DataOf("segment");
        EXPECT_EQ((Index{{5000, file.HeaderOf("d") - base},
                         {10000, file.HeaderOf("a") - base},
                         {20000, file.HeaderOf("b") - base},
                         {30000, file.HeaderOf("c") - base}}),
                  IndexOf(rebuilt));
        EXPECT_EQ(5.0, rebuilt.Model().Info.Duration.Get());  // the last Cluster's, not the latest
        ASSERT_EQ(1u, rebuilt.Model().Cues.size());
        EXPECT_TRUE(rebuilt.Model().Cues[0]->IsSynthesised);
        const reader::Cue& cue = *rebuilt.Model().Cues[0];
        EXPECT_EQ(4u, cue.PositionsOf(cue.Points[0])->CueTrack);  // the master track
    }
}

TEST(SeekIndex, TheDurationIsRoundedToSinglePrecision) {
    const struct {
        uint64_t timecode;
        double duration;
    } rows[] = {{16777215, 16777215.0},
                {16777217, 16777216.0},
                {16777219, 16777220.0},
                {UINT64_MAX, 18446744073709551616.0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.timecode);
        RebuiltFile open(Clusters({Cluster(1, {}), Cluster(row.timecode, {})}));
        EXPECT_EQ(row.duration, open.Model().Info.Duration.Get());
        EXPECT_TRUE(open.Model().Info.Duration.IsSet());
    }
}

TEST(SeekIndex, ClustersWithoutATimecodeAndNoClusters) {
    RebuiltFile open(Clusters({Cluster(9, {}), Master(id::kCluster, {SimpleBlock(1, 0, 0, Hex("01"))})}));
    const Index index = IndexOf(open);
    ASSERT_EQ(2u, index.size());
    EXPECT_EQ(0, index[0].first);
    EXPECT_EQ(0.0, open.Model().Info.Duration.Get());

    RebuiltFile none(Clusters({}));
    EXPECT_EQ(0.0, none.Model().Info.Duration.Get());  // the stored 77 is gone
    EXPECT_TRUE(IndexOf(none).empty());
}

TEST(SeekIndex, TheVisitReadsNoPayload) {
    const Document file =
        Clusters({Cluster(1, {SimpleBlock(1, 0, kKeyFrame, Bytes(5000)).Label("payload")})});
    Faults faults;
    faults.recordCalls = true;
    InitialisedFile open(file, faults);
    open.file.RebuildIndex();
    EXPECT_FALSE(open.source->Touched(file.DataOf("payload") + reader::Pieces::kHead, file.EndOf("payload")));
}

// A Segment that says it ends inside the last Cluster's header: that Cluster's first child is read all the
// same.
TEST(SeekIndex, TheLastClusterCountsWhereItsSegmentEndsTooSoon) {
    Elements children = Head();
    children.push_back(Cluster(10, {}));
    children.push_back(Cluster(20, {}).Label("last"));
    const Document whole = Write({EbmlHeader(), Segment(children).SizeWidth(8).Label("segment")});
    const uint64_t cut = whole.HeaderOf("last") + 2 - whole.DataOf("segment");
    RebuiltFile rebuilt(Write({EbmlHeader(), Segment(children).SizeWidth(8).DeclaredSize(cut)}));
    EXPECT_EQ(20.0, rebuilt.Model().Info.Duration.Get());
}

// Against a plain binary search, over keys spread evenly, in clumps, all equal, and at both ends of the type.
TEST(SeekIndex, LookUpsCountAsABinarySearchDoes) {
    std::mt19937_64 random(7);
    for (const uint64_t spread : {1u, 3u, 1000u}) {
        for (const size_t count : {1u, 2u, 3u, 64u, 1000u}) {
            std::vector<int64_t> keys(count);
            for (size_t i = 0; i < count; ++i)
                keys[i] = i % 7 == 0 ? int64_t(random()) : int64_t(random() % spread);
            std::sort(keys.begin(), keys.end());
            std::vector<int64_t> wanted = {INT64_MIN, -1, 0, 1, INT64_MAX};
            for (const int64_t key : keys)
                wanted.insert(wanted.end(), {key, key == INT64_MIN ? key : key - 1});
            for (const int64_t key : wanted) {
                const auto behind = std::upper_bound(keys.begin(), keys.end(), key);
                size_t looks = 0;
                const auto keyOf = [&](size_t i) {
                    ++looks;
                    return keys[i];
                };
                ASSERT_EQ(size_t(behind - keys.begin()), reader::CountUpTo<int64_t>(key, count, keyOf))
                    << "of " << count << " keys, " << key;
                EXPECT_LE(looks, 4 + 2 * size_t(std::log2(count) + 1));
            }
        }
    }
}

// As soon as Cues are parsed, whatever source they came from: no point at or before the target is passed
// over, in any order and however the times wrap, and an ordered list is cut at the target.
TEST(SeekIndex, LookUpsOfCuesPassOverNoPointThatAWalkTakes) {
    std::mt19937_64 random(3);
    size_t cut = 0;
    for (int round = 0; round < 20000; ++round) {
        const uint64_t scales[] = {0, 1, 1000000, uint64_t{1} << 40, random()};
        OpenFile open(Bytes{});
        open.Model().Info.TimecodeScale.Set(scales[round % 5]);
        std::vector<uint64_t> times(1 + random() % 6);
        for (uint64_t& time : times) time = random() >> random() % 64;
        if (round % 3 != 0) std::sort(times.begin(), times.end());
        const reader::AutoPtr<reader::Cue> cue = new reader::Cue;
        for (const uint64_t time : times) cue->AddPoint(time, 1, 0);
        const uint64_t near = open.file.ToMicroseconds(times[random() % times.size()]);
        const uint64_t target = near + (random() % 3 - 1);
        const size_t count = open.file.CountCuePointsUpTo(*cue, target);
        for (size_t i = count; i < times.size(); ++i)
            ASSERT_GT(open.file.ToMicroseconds(times[i]), target) << "round " << round;
        if (count < times.size()) ++cut;
    }
    EXPECT_GT(cut, 1000u);
}

}  // namespace
}  // namespace testing_support
