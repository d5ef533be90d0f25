// Delivered units: times, sync flags, laces, what is left out, what is skipped when playback is late.
#include "matroska/MatroskaFixture.h"

namespace testing_support {
namespace {

TEST(Delivery, TimesAndSyncFlags) {
    const struct {
        const char* name;
        uint64_t scale;
        uint64_t clusterTimecode;
        Element block;
        const char* unit;
    } rows[] = {
        {"key frame", 1000000, 100, SimpleBlock(1, 5, kKeyFrame, Hex("AA")), "105000/1:aa"},
        {"no key frame", 1000000, 100, SimpleBlock(1, 5, 0, Hex("AA")), "105000/0:aa"},
        {"other flags do not matter", 1000000, 100, SimpleBlock(1, 5, 0x09, Hex("AA")), "105000/0:aa"},
        {"group without a reference", 1000000, 100, BlockGroup(1, 5, Hex("AA")), "105000/1:aa"},
        {"group with a reference", 1000000, 100,
         BlockGroup(1, 5, Hex("AA"), {Int(id::kReferenceBlock, -5, 1)}), "105000/0:aa"},
        {"a reference of 0 is one", 1000000, 100,
         BlockGroup(1, 5, Hex("AA"), {Int(id::kReferenceBlock, 0, 1)}), "105000/0:aa"},
        {"negative timecode", 1000000, 100, SimpleBlock(1, -5, kKeyFrame, Hex("AA")), "95000/1:aa"},
        {"scale 1 ns, truncated", 1, 1000, SimpleBlock(1, 999, kKeyFrame, Hex("AA")), "1/1:aa"},
        {"scale 100000", 100000, 7, SimpleBlock(1, 1, kKeyFrame, Hex("AA")), "800/1:aa"},
        // A sum below zero is a large unsigned number by the time it is multiplied.
        {"before zero", 1, 0, SimpleBlock(1, -1, kKeyFrame, Hex("AA")), "18446744073709551/1:aa"},
        {"empty frame", 1000000, 1, SimpleBlock(1, 0, kKeyFrame, Bytes()), "1000/1:"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Document file =
            Write({EbmlHeader(), Segment({Info(10000, row.scale), Master(id::kTracks, {Mpeg2Track(1)}),
                                          Cluster(row.clusterTimecode, {row.block})})});
        EXPECT_EQ(std::string(row.unit) + " -1011", Units(Started(Open(file), 0)));
    }
}

TEST(Delivery, EndsOnceAndStartsAgain) {
    const sp<MediaExtractor> extractor =
        Open(Movie({Mpeg2Track(1), Mp3Track(2)}, {Cluster(0, {SimpleBlock(1, 0, kKeyFrame, Hex("A0"))})}));
    const sp<MediaSource> source = Started(extractor, 0);
    EXPECT_EQ("0/1:a0 -1011", Units(source));
    EXPECT_EQ("-1011", ReadOne(source));
    source->stop();
    source->start(nullptr);
    EXPECT_EQ("0/1:a0 -1011", Units(source));
    EXPECT_EQ("-1011", Units(Started(extractor, 1)));  // a track without blocks
}

TEST(Delivery, EmptyFilesEndAtOnce) {
    EXPECT_EQ("-1011", Units(Started(Open(Movie({Mpeg2Track(1)}, {})), 0)));
    EXPECT_EQ("-1011", Units(Started(Open(Movie({Mpeg2Track(1)}, {Cluster(0, {})})), 0)));
}

TEST(Delivery, LacesStayTogetherExceptForVorbis) {
    const Bytes vorbisPrivate = Concat({Hex("020101"), Hex("01 03 05")});
    const std::vector<Bytes> frames = {Hex("A0A0"), Hex("A1"), Hex("A2A2A2"), Hex("A3")};
    const struct {
        const char* name;
        Element track;
        const char* units;
    } rows[] = {
        {"Vorbis", Track(1, kAudioType, "A_VORBIS", {Bin(id::kCodecPrivate, vorbisPrivate)}),
         "20000/1:a0a0 20000/1:a1 20000/1:a2a2a2 20000/1:a3 40000/1:bb -1011"},
        {"MP3", Mp3Track(1), "20000/1:a0a0a1a2a2a2a3 40000/1:bb -1011"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Document file =
            Movie({row.track}, {Cluster(20, {SimpleBlock(1, 0, kKeyFrame, Lacing::kXiph, frames),
                                             SimpleBlock(1, 20, kKeyFrame, Hex("BB"))})});
        EXPECT_EQ(row.units, Units(Started(Open(file), 0)));
    }
}

TEST(Delivery, AUnitThatCannotBeReadEndsOneReadOnly) {
    const Bytes vorbisPrivate = Concat({Hex("020101"), Hex("01 03 05")});
    const Element good = SimpleBlock(1, 0, kKeyFrame, Hex("A0"));
    const Element after = SimpleBlock(1, 2, kKeyFrame, Hex("A2"));
    const struct {
        const char* name;
        Element track;
        Elements clusters;
    } rows[] = {
        {"longer than the source",
         Mpeg2Track(1),
         {Cluster(0, {good, SimpleBlock(1, 1, 0, Hex("A1")).DeclaredSize(1 << 20)}), Cluster(0, {after})}},
        {"longer than 32 bits",
         Mpeg2Track(1),
         {Cluster(0, {good, SimpleBlock(1, 1, 0, Hex("A1")).DeclaredSize((1ull << 32) + 6)}),
          Cluster(0, {after})}},
        {"a lace that does not fit",
         Track(1, kAudioType, "A_VORBIS", {Bin(id::kCodecPrivate, vorbisPrivate)}),
         {Cluster(0, {good, SimpleBlock(1, 1, 0x82, Hex("01 05 AA")), after})}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const sp<MediaSource> source = Started(Open(Movie({row.track}, row.clusters)), 0);
        EXPECT_EQ("0/1:a0", ReadOne(source));
        EXPECT_EQ("-1011", ReadOne(source));
        EXPECT_EQ("2000/1:a2", ReadOne(source));
        EXPECT_EQ("-1011", ReadOne(source));
    }
}

TEST(Delivery, TheBlockOfTheConfigurationComesWithoutIt) {
    const Element track =
        Track(1, kVideoType, "V_MS/VFW/FOURCC", {Video(64, 48), Private(BitmapHeader("XVID"))});
    const Bytes frame = Hex("000001B0 01 000001B6 10AA");
    const Document file = Movie(
        {track}, {Cluster(0, {SimpleBlock(1, 0, kKeyFrame, frame), SimpleBlock(1, 40, kKeyFrame, frame)})});
    EXPECT_EQ("0/1:000001b610aa 40000/1:000001b001000001b610aa -1011", Units(Started(Open(file), 0)));
}

// --- Late frames ---

// Frames every 40 ms for three seconds, a Cluster a second, each with a key frame first and a Cue.
Document Seconds() {
    constexpr uint64_t kTwoByteNumber = 200;
    Elements clusters, points;
    for (uint64_t second = 0; second < 3; ++second) {
        Elements blocks;
        for (int i = 0; i < 25; ++i) {
            blocks.push_back(SimpleBlock(kTwoByteNumber, static_cast<int16_t>(i * 40),
                                         i == 0 ? kKeyFrame : uint8_t{0},
                                         {static_cast<uint8_t>(second * 25 + static_cast<uint64_t>(i))}));
            if (i == 0) blocks[0] = blocks[0].Label("key frame " + std::to_string(second));
        }
        const std::string label = "second " + std::to_string(second);
        clusters.push_back(Cluster(second * 1000, blocks).Label(label));
        points.push_back(CuePoint(second * 1000, kTwoByteNumber, label));
    }
    Elements children = {Info(3000), Master(id::kTracks, {Mpeg2Track(kTwoByteNumber)}),
                         Master(id::kCues, points)};
    children.insert(children.end(), clusters.begin(), clusters.end());
    return Write({EbmlHeader(), Segment(children)});
}

TEST(Late, Thresholds) {
    const struct {
        const char* name;
        int framesBefore;
        int64_t lateByUs;
        int64_t deliveredUs;
        const char* warning;
    } rows[] = {
        {"on time", 24, 0, 960000, nullptr},
        {"at the threshold", 24, 400000, 960000, nullptr},
        {"beyond it, the next second is near", 24, 400001, 1000000,
         "something wrong? iLate = 400001, timeUs = 960000, curIndexTime = 1000000"},
        {"beyond it, but the next second is too far", 2, 400001, 80000,
         "something wrong? iLate = 400001, timeUs = 80000, curIndexTime = 1000000"},
        {"the slack reaches exactly", 12, 420000, 1000000,
         "something wrong? iLate = 420000, timeUs = 480000, curIndexTime = 1000000"},
        {"one microsecond short of it", 12, 419999, 480000,
         "something wrong? iLate = 419999, timeUs = 480000, curIndexTime = 1000000"},
        {"very late: still one jump only", 2, 10000000, 1000000,
         "something wrong? iLate = 10000000, timeUs = 80000, curIndexTime = 1000000"},
        {"behind the last entry", 70, 10000000, 2800000, nullptr},
    };
    const Document file = Seconds();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const sp<MediaSource> source = Started(Open(file), 0);
        Unit unit;
        for (int i = 0; i < row.framesBefore; ++i) ASSERT_EQ(android::OK, ReadUnit(source, &unit));
        MediaSource::ReadOptions options;
        options.setLateBy(row.lateByUs);
        LogCapture log;
        ASSERT_EQ(android::OK, ReadUnit(source, &unit, &options));
        EXPECT_EQ(row.deliveredUs, unit.timeUs);
        std::vector<LogRecord> expected;
        if (row.warning != nullptr) expected.push_back({ANDROID_LOG_WARN, kTag, row.warning});
        EXPECT_EQ(expected, log.WithTag(kTag));
        ASSERT_EQ(android::OK, ReadUnit(source, &unit));
        EXPECT_EQ(row.deliveredUs + 40000, unit.timeUs);  // and reading goes on from there
    }
}

// The index names a Cluster behind which no block of the track is late enough: the unit at hand comes, then
// all that follow, an event on the way is queued once, and the entry is not tried again. With such a block in
// the Cluster behind it, that comes.
TEST(Late, AnEntryThatLeadsNowhereLeavesThePlace) {
    const Element frame = SimpleBlock(1, 0, kKeyFrame, {0xA0});
    Elements children = {Info(3000), Master(id::kTracks, {Mpeg2Track(1), TextTrack(2)}),
                         Master(id::kCues, {CuePoint(0, 1, "a"), CuePoint(1000, 1, "b")}),
                         Cluster(900, {frame, SimpleBlock(1, 10, 0, {0xA1})}).Label("a"),
                         Cluster(950, {BlockGroup(2, 0, Text("once")), frame}).Label("b")};
    const Document file = Write({EbmlHeader(), Segment(children)});
    children.push_back(Cluster(1200, {frame}));
    const Document longer = Write({EbmlHeader(), Segment(children)});
    const sp<MediaExtractor> extractor = Open(file);
    const sp<MediaSource> source = Started(extractor, 0), subtitles = Started(extractor, 1);
    MediaSource::ReadOptions options;
    options.setLateBy(1000000);
    EXPECT_EQ("900000/1:a0", ReadOne(source, &options));
    LogCapture log;
    EXPECT_EQ("910000/0:a1", ReadOne(source, &options));
    EXPECT_TRUE(log.Records().empty());
    EXPECT_EQ("950000/1:a0 -1011", Units(source));
    EXPECT_EQ(1u, ReadAll(subtitles).size());
    EXPECT_EQ("1200000/1:a0", ReadOne(Started(Open(longer), 0), &options));
}

Elements ClustersOf(size_t count, size_t blocks, const Element& block, bool isLive = false) {
    const Element cluster = Cluster(0, Elements(blocks, block));
    return Elements(count, isLive ? cluster.UnknownSize(8) : cluster);
}

Elements Joined(Elements first, const Elements& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

// What reading asks of a source that caches nothing, a unit: a payload each, and its share of the headers.
TEST(Walk, AsksTheSourceLittleMoreThanOnceAUnit) {
    const Bytes frame(50, 1), bytes(2000, 1);
    const Element small = SimpleBlock(1, 0, kKeyFrame, frame), large = SimpleBlock(1, 0, kKeyFrame, bytes),
                  group = BlockGroup(1, 0, frame, {Uint(id::kBlockDuration, 20)}),
                  laced = SimpleBlock(1, 0, kKeyFrame, Lacing::kEbml, {bytes, frame, frame, frame});
    const struct {
        const char* name;
        Elements clusters;
        size_t units;
        double most;
    } rows[] = {
        {"small blocks", ClustersOf(20, 30, small), 600, 1.1},
        {"small groups", ClustersOf(20, 30, group), 600, 1.12},
        {"one block a Cluster", ClustersOf(60, 1, small), 60, 2.2},
        {"large blocks", ClustersOf(10, 8, large), 80, 2.2},
        {"laced", ClustersOf(10, 8, laced), 80, 2.2},
        {"Clusters of unknown size", ClustersOf(10, 8, large, true), 80, 4.2},
        {"those without blocks", Joined(ClustersOf(30, 0, small, true), ClustersOf(30, 1, small)), 30, 4.0},
    };
    for (const auto& row : rows) {
        const Document file = Movie({Mpeg2Track()}, row.clusters);
        const sp<FaultySource> counting(new FaultySource(file.bytes));
        const sp<MediaExtractor> extractor = Open(sp<android::DataSource>(counting));
        const uint64_t opening = counting->Reads();
        EXPECT_EQ(row.units, ReadAll(Started(extractor, 0)).size()) << row.name;
        EXPECT_LE(static_cast<double>(counting->Reads() - opening) / static_cast<double>(row.units), row.most)
            << row.name;
    }
}

// A source that fails once may deliver the next time: what was not seen then is not taken for the Cluster's
// end.
TEST(Walk, AFailedReadIsForgottenBySeekingBack) {
    const Document file = Seconds();
    const std::string whole = Units(Started(Open(file), 0));
    Faults recording;
    recording.recordCalls = true;
    const sp<FaultySource> counting(new FaultySource(file.bytes, recording));
    const sp<MediaExtractor> counted = Open(sp<android::DataSource>(counting));
    const uint64_t opening = counting->Reads();
    Units(Started(counted, 0));
    const std::vector<FaultySource::Call> calls = counting->Calls();
    for (uint64_t call = opening; call < counting->Reads(); ++call) {
        SCOPED_TRACE(call);
        Faults faults;
        faults.errorAtCall = call;
        const sp<MediaSource> source = Started(Open(file, faults), 0);
        const size_t units = ReadAll(source).size();
        // The block that could not be read is lost alone where its place is known.
        if (calls[call].offset == static_cast<off64_t>(file.DataOf("key frame 1"))) {
            EXPECT_EQ(74u, units);
        }
        source->start(nullptr);
        EXPECT_EQ(whole, Units(source));
    }
}

TEST(Late, WithoutAnIndexNothingIsSkipped) {
    Faults faults;
    faults.flags = 4;
    const sp<MediaSource> source = Started(Open(Seconds(), faults), 0);
    MediaSource::ReadOptions options;
    options.setLateBy(5000000);
    LogCapture log;
    EXPECT_EQ("0/1:00", ReadOne(source, &options));
    EXPECT_EQ("40000/0:01", ReadOne(source, &options));
    EXPECT_TRUE(log.WithTag(kTag).empty());
}

TEST(Late, ASeekMovesTheIndexCursorBehindItsTarget) {
    const sp<MediaSource> source = Started(Open(Seconds()), 0);
    MediaSource::ReadOptions options;
    options.setSeekTo(1000000);
    options.setLateBy(950000);
    // The entry behind the target is 2 s: near enough for a unit at 1 s that is 0.95 s late.
    EXPECT_EQ("2000000/1:32", ReadOne(source, &options));
}

}  // namespace
}  // namespace testing_support
