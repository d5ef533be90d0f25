// What a seek reads, where it leaves a source that finds nothing, and seeks at odd moments.
#include "matroska/MatroskaFixture.h"

namespace testing_support {
namespace {

MediaSource::ReadOptions SeekTo(int64_t timeUs) {
    MediaSource::ReadOptions options;
    options.setSeekTo(timeUs);
    return options;
}

std::string Seek(const sp<MediaSource>& source, int64_t timeUs) {
    const MediaSource::ReadOptions options = SeekTo(timeUs);
    return ReadOne(source, &options);
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

TEST(Scan, AClusterNamedTwiceInARowIsLookedThroughOnce) {
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
        EXPECT_EQ("0/1:01", Seek(source, 6000000));
        return bytes->Reads() - before;
    };
    const uint64_t once = readsOfASeek({Position(1, "b")});
    EXPECT_EQ(once, readsOfASeek({Position(1, "b"), Position(1, "b")}));
    EXPECT_LT(once, readsOfASeek({Position(1, "b"), Position(1, "c")}));
}

// With no key frame to be found, reading goes on behind the last block that was looked at: the Cluster's last
// one, or one behind the target that ended the look. Without a block, at the start of the file. The Timecode
// of what was opened counts for a Cluster that has none.
TEST(Scan, WithoutAKeyFrameReadingGoesOnBehindTheBlockLookedAtLast) {
    const Element next = Master(id::kCluster, {SimpleBlock(1, 1, 0, {0x20})});
    const struct {
        const char* name;
        Elements tried;
        const char* landing;
    } rows[] = {
        {"all looked at", {SimpleBlock(1, 0, 0, {0x10}), SimpleBlock(1, 10, 0, {0x11})}, "4001000/0:20"},
        {"given up in the middle",
         {SimpleBlock(1, 0, 0, {0x10}), SimpleBlock(1, 2000, 0, {0x11}), SimpleBlock(1, 2100, 0, {0x12})},
         "6100000/0:12"},
        {"given up, a key frame further on",
         {SimpleBlock(1, 2000, 0, {0x11}), SimpleBlock(1, 2100, kKeyFrame, {0x12})},
         "6100000/1:12"},
        {"only another track's", {SimpleBlock(2, 0, kKeyFrame, {0x10})}, "4001000/0:20"},
        {"no block", {}, "4000000/0:01"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Document file =
            WithCues({CuePoint(4000, 1, "b")}, {Master(id::kCluster, {SimpleBlock(1, 0, 0, {0x01})}),
                                                Cluster(4000, row.tried).Label("b"), next});
        const sp<MediaSource> source = Started(Open(file), 0);
        EXPECT_EQ(row.landing, Seek(source, 5000000));
    }
}

TEST(Scan, LacesThatWereLeftAreGoneAfterASeek) {
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
    EXPECT_EQ("5000000/1:10", Seek(source, 6000000));
    EXPECT_EQ("-1011", ReadOne(source));
    EXPECT_EQ("0/1:01", Seek(source, 1));  // and a block that was begun starts over
    EXPECT_EQ("0/1:02", ReadOne(source));
}

TEST(Scan, AtOddMomentsAndOddPlaces) {
    const Document file = WithCues({CuePoint(0, 1, "a"), CuePoint(5000, 1, "b")},
                                   {Cluster(0, {SimpleBlock(1, 0, kKeyFrame, {0x01})}).Label("a"),
                                    Cluster(5000, {SimpleBlock(1, 0, kKeyFrame, {0x10})}).Label("b")});
    const sp<MediaSource> source = Open(file)->getTrack(0);
    EXPECT_EQ("5000000/1:10", Seek(source, 6000000));  // before start: a seek positions by itself
    source->start(nullptr);
    EXPECT_EQ("0/1:01", ReadOne(source));
    for (const int64_t extreme : {INT64_MIN, INT64_MIN + 1, INT64_MAX, INT64_MAX - 1}) {
        EXPECT_EQ("-1011", Seek(source, extreme)) << extreme;
        EXPECT_EQ("-1011", ReadOne(source)) << extreme;
    }
    EXPECT_EQ("5000000/1:10", Seek(source, 6000000));
    source->stop();
    EXPECT_EQ("0/1:01", Seek(source, 1));
    for (const int64_t late : {INT64_MIN, INT64_MAX}) {
        MediaSource::ReadOptions options = SeekTo(1);
        options.setLateBy(late);
        EXPECT_NE("", ReadOne(source, &options)) << late;  // a sum that wraps: defined, and no more
    }
}

}  // namespace
}  // namespace testing_support
