// Where a seek request lands.
#include "matroska/MatroskaFixture.h"

namespace testing_support {
namespace {

struct SeekFile {
    Elements points;
    Elements clusters;
    double duration = 20000;
    Document Build() const {
        Elements children = {Info(duration), Master(id::kTracks, {Mpeg2Track(1), Mp3Track(2)})};
        if (!points.empty()) children.push_back(Master(id::kCues, points));
        children.insert(children.end(), clusters.begin(), clusters.end());
        return Write({EbmlHeader(), Segment(children)});
    }
};

// Clusters at 0, 5 and 12 s, each: video key frame, audio, video, audio.
SeekFile Usual() {
    SeekFile file;
    uint8_t value = 0;
    for (uint64_t second : {0, 5, 12}) {
        const std::string label = "at " + std::to_string(second);
        file.points.push_back(CuePoint(second * 1000, 1, label));
        file.clusters.push_back(Cluster(second * 1000, {SimpleBlock(1, 0, kKeyFrame, {value}),
                                                        SimpleBlock(2, 20, kKeyFrame, {uint8_t(value + 1)}),
                                                        SimpleBlock(1, 40, 0, {uint8_t(value + 2)}),
                                                        SimpleBlock(2, 60, kKeyFrame, {uint8_t(value + 3)})})
                                    .Label(label));
        value = static_cast<uint8_t>(value + 0x10);
    }
    return file;
}

std::string SeekTo(const sp<MediaSource>& source, int64_t timeUs,
                   MediaSource::ReadOptions::SeekMode mode = MediaSource::ReadOptions::SEEK_CLOSEST_SYNC) {
    MediaSource::ReadOptions options;
    options.setSeekTo(timeUs, mode);
    return ReadOne(source, &options);
}

TEST(Seek, LandsOnTheKeyFrameOfTheCuedCluster) {
    const struct {
        const char* name;
        size_t track;
        int64_t timeUs;
        const char* unit;
    } rows[] = {
        {"zero", 0, 0, "0/1:00"},
        {"below the second Cue", 0, 4999999, "0/1:00"},
        {"exactly a Cue", 0, 5000000, "5000000/1:10"},
        {"between Cues", 0, 10000000, "5000000/1:10"},
        {"behind the last", 0, 19999999, "12000000/1:20"},
        {"audio follows the video's Cues, even past the target", 1, 5000000, "5020000/1:11"},
        {"the duration", 0, 20000000, "-1011"},
        {"behind it", 0, 30000000, "-1011"},
        {"negative", 0, -1, "-1011"},
    };
    const Document file = Usual().Build();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const sp<MediaSource> source = Started(Open(file), row.track);
        EXPECT_EQ(row.unit, SeekTo(source, row.timeUs));
        for (auto mode : {MediaSource::ReadOptions::SEEK_PREVIOUS_SYNC,
                          MediaSource::ReadOptions::SEEK_NEXT_SYNC, MediaSource::ReadOptions::SEEK_CLOSEST}) {
            EXPECT_EQ(row.unit, SeekTo(source, row.timeUs, mode));  // the mode is not asked
        }
    }
}

TEST(Seek, WithoutCuesTheVisitedClustersServe) {
    SeekFile file = Usual();
    file.points = {};
    const Document document = file.Build();
    EXPECT_EQ("5000000/1:10", SeekTo(Started(Open(document), 0), 6000000));
    EXPECT_EQ("-1011",
              SeekTo(Started(Open(document), 0), 12000000));  // the duration is the last Cluster's timecode
    Faults caching;
    caching.flags = 4;
    EXPECT_EQ("0/1:00", SeekTo(Started(Open(document, caching), 0), 6000000));  // no index: from the start
}

TEST(Seek, WithoutADurationEverySeekEnds) {
    SeekFile file = Usual();
    file.duration = 0;
    const sp<MediaSource> source = Started(Open(file.Build()), 0);
    EXPECT_EQ("-1011", SeekTo(source, 0));
    EXPECT_EQ("-1011", SeekTo(source, 5000000));
    source->start(nullptr);
    EXPECT_EQ("0/1:00", ReadOne(source));
}

// A long list is searched: what a seek reads does not grow with the number of points in front of its target.
TEST(Seek, ALongListCostsNoMoreReadsThanAShortOne) {
    const auto readsOfASeek = [](uint64_t points) {
        SeekFile file = Usual();
        for (uint64_t i = 0; i < points; ++i)
            file.points.insert(file.points.begin(), CuePoint(4000 - 4000 * i / points, 1, "at 0"));
        const sp<FaultySource> bytes = new FaultySource(file.Build().bytes);
        const sp<MediaSource> source = Started(Open(sp<android::DataSource>(bytes)), 0);
        const uint64_t before = bytes->Reads();
        EXPECT_EQ("5000000/1:10", SeekTo(source, 6000000));
        return bytes->Reads() - before;
    };
    EXPECT_EQ(readsOfASeek(20), readsOfASeek(2000));
}

// Times beyond what 64 bits of microseconds hold wrap, and a list that ascends in the file may then descend.
TEST(Seek, WrappedCueTimesAreComparedAsTheyCameOut) {
    const uint64_t scale = uint64_t{1} << 40;  // ns a unit
    Elements points;
    for (uint64_t time : {uint64_t{1}, uint64_t{1} << 24}) {  // the second wraps to 0
        points.push_back(CuePoint(time, 1, time == 1 ? "first" : "second"));
    }
    const Document file =
        Write({EbmlHeader(),
               Segment({Info(1000, scale), Master(id::kTracks, {Mpeg2Track(1)}), Master(id::kCues, points),
                        Cluster(0, {SimpleBlock(1, 0, kKeyFrame, {0x10})}).Label("first"),
                        Cluster(0, {SimpleBlock(1, 0, kKeyFrame, {0x20})}).Label("second")})});
    MediaSource::ReadOptions options;
    options.setSeekTo(5);  // in front of the first point, behind the wrapped one
    EXPECT_EQ("0/1:20", ReadOne(Started(Open(file), 0), &options));
}

Document WithCues(const Elements& points, const Elements& clusters,
                  const Elements& tracks = {Mpeg2Track(1)}) {
    Elements children = {Info(20000), Master(id::kTracks, tracks), Master(id::kCues, points)};
    children.insert(children.end(), clusters.begin(), clusters.end());
    return Write({EbmlHeader(), Segment(children)});
}

Element Position(uint64_t track, const std::string& label) {
    return Master(id::kCueTrackPositions,
                  {Uint(id::kCueTrack, track), PositionOf(id::kCueClusterPosition, label)});
}

TEST(Seek, AClusterNamedTwiceInARowIsLookedThroughOnce) {
    const Elements clusters = {Cluster(0, {SimpleBlock(1, 0, kKeyFrame, {0x01})}).Label("a"),
                               Cluster(5000, {SimpleBlock(1, 0, 0, {0x02})}).Label("b"),
                               Cluster(9000, {SimpleBlock(1, 0, 0, {0x03})}).Label("c")};
    auto readsOfASeek = [&](const Elements& positions) {
        Elements parts = {Uint(id::kCueTime, 5000)};
        parts.insert(parts.end(), positions.begin(), positions.end());
        const Document file = WithCues({CuePoint(0, 1, "a"), Master(id::kCuePoint, parts)}, clusters);
        const sp<FaultySource> bytes = new FaultySource(file.bytes);
        const sp<MediaSource> source = Started(Open(sp<android::DataSource>(bytes)), 0);
        const uint64_t before = bytes->Reads();
        EXPECT_EQ("0/1:01", SeekTo(source, 6000000));
        return bytes->Reads() - before;
    };
    const uint64_t once = readsOfASeek({Position(1, "b")});
    EXPECT_EQ(once, readsOfASeek({Position(1, "b"), Position(1, "b")}));
    EXPECT_LT(once, readsOfASeek({Position(1, "b"), Position(1, "c")}));
}

// The Cluster at the target is given up, and the other point names none: reading begins with the file.
TEST(Seek, WhereNothingServesItIsTheStart) {
    const Document file = WithCues({CuePoint(0, 1, "tracks"), CuePoint(5000, 1, "b")},
                                   {Cluster(0, {SimpleBlock(1, 0, kKeyFrame, {0x01})}),
                                    Cluster(5000, {SimpleBlock(1, 999, 0, {0x02})}).Label("b")},
                                   {Mpeg2Track(1).Label("tracks")});
    EXPECT_EQ("0/1:01", SeekTo(Started(Open(file), 0), 5500000));
}

TEST(Seek, LacesThatWereLeftAreGoneAfterASeek) {
    const Bytes vorbis = Concat({Hex("02 1E 07"), Hex("01766F72626973"), Bytes(23, 0), Hex("03766F72626973"),
                                 Hex("05766F72626973"), Bytes(8, 0)});
    const Elements tracks = {
        Track(1, kAudioType, "A_VORBIS", {Audio(44100, 2), Bin(id::kCodecPrivate, vorbis)})};
    const Document file =
        WithCues({CuePoint(0, 1, "a"), CuePoint(5000, 1, "b")},
                 {Cluster(0, {SimpleBlock(1, 0, kKeyFrame, Lacing::kXiph, {Hex("01"), Hex("02"), Hex("03")})})
                      .Label("a"),
                  Cluster(5000, {SimpleBlock(1, 0, kKeyFrame, {0x10})}).Label("b")},
                 tracks);
    const sp<MediaSource> source = Started(Open(file), 0);
    EXPECT_EQ("0/1:01", ReadOne(source));
    EXPECT_EQ("5000000/1:10", SeekTo(source, 6000000));
    EXPECT_EQ("-1011", ReadOne(source));
    EXPECT_EQ("0/1:01", SeekTo(source, 1));  // and a block that was begun starts over
    EXPECT_EQ("0/1:02", ReadOne(source));
}

TEST(Seek, AtOddMomentsAndOddPlaces) {
    const Document file = WithCues({CuePoint(0, 1, "a"), CuePoint(5000, 1, "b")},
                                   {Cluster(0, {SimpleBlock(1, 0, kKeyFrame, {0x01})}).Label("a"),
                                    Cluster(5000, {SimpleBlock(1, 0, kKeyFrame, {0x10})}).Label("b")});
    const sp<MediaSource> source = Open(file)->getTrack(0);
    EXPECT_EQ("5000000/1:10", SeekTo(source, 6000000));  // before start: a seek positions by itself
    source->start(nullptr);
    EXPECT_EQ("0/1:01", ReadOne(source));
    for (const int64_t extreme : {INT64_MIN, INT64_MIN + 1, INT64_MAX, INT64_MAX - 1}) {
        EXPECT_EQ("-1011", SeekTo(source, extreme)) << extreme;
        EXPECT_EQ("-1011", ReadOne(source)) << extreme;
    }
    EXPECT_EQ("5000000/1:10", SeekTo(source, 6000000));
    source->stop();
    EXPECT_EQ("0/1:01", SeekTo(source, 1));
    for (const int64_t late : {INT64_MIN, INT64_MAX}) {
        MediaSource::ReadOptions options;
        options.setSeekTo(1);
        options.setLateBy(late);
        EXPECT_NE("", ReadOne(source, &options)) << late;  // a sum that wraps: defined, and no more
    }
}

}  // namespace
}  // namespace testing_support
