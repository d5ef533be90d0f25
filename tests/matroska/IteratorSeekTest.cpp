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

TEST(Seek, ReadingGoesOnBehindIt) {
    const sp<MediaSource> source = Started(Open(Usual().Build()), 0);
    EXPECT_EQ("-1011", SeekTo(source, 20000000));
    EXPECT_EQ("-1011", ReadOne(source));  // a seek past the end stays at the end
    EXPECT_EQ("5000000/1:10", SeekTo(source, 6000000));
    EXPECT_EQ("5040000/0:12 12000000/1:20 12040000/0:22 -1011", Units(source));
    EXPECT_EQ("0/1:00", SeekTo(source, 0));
}

TEST(Seek, ClustersWithoutAUsableKeyFrameAreLeftForEarlierOnes) {
    SeekFile late = Usual();
    late.clusters[1] = Cluster(5000, {SimpleBlock(1, 0, 0, {0x10}), SimpleBlock(1, 900, 0, {0x11}),
                                      SimpleBlock(1, 950, kKeyFrame, {0x12})})
                           .Label("at 5");
    // Key frames behind the target count as long as no other frame behind it comes first.
    EXPECT_EQ("5950000/1:12", SeekTo(Started(Open(late.Build()), 0), 5900000));
    EXPECT_EQ("0/1:00", SeekTo(Started(Open(late.Build()), 0), 5899999));

    SeekFile none = Usual();
    for (size_t i = 0; i < 3; ++i) {
        none.clusters[i] = Cluster(i * 5000, {SimpleBlock(1, 0, 0, {static_cast<uint8_t>(i)})})
                               .Label("at " + std::string(i == 0   ? "0"
                                                          : i == 1 ? "5"
                                                                   : "12"));
    }
    // No key frame anywhere: the last Cluster tried was the first; reading goes on behind it.
    EXPECT_EQ("5000000/0:01", SeekTo(Started(Open(none.Build()), 0), 13000000));
}

TEST(Seek, CuesOfOtherTracksDoNotCount) {
    SeekFile file = Usual();
    file.points = {CuePoint(0, 2, "at 0"), CuePoint(5000, 2, "at 5")};
    EXPECT_EQ("0/1:00", SeekTo(Started(Open(file.Build()), 0), 6000000));
    file.points.push_back(CuePoint(1000, 1, "at 12"));
    EXPECT_EQ("12000000/1:20", SeekTo(Started(Open(file.Build()), 0), 6000000));  // a Cue is believed
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

TEST(Seek, CuesThatLeadNowhere) {
    for (uint64_t position : {1ull << 20, 1ull << 62, (1ull << 63) - 1, ~0ull - 48, 3ull}) {
        SCOPED_TRACE(position);
        SeekFile file = Usual();
        file.points = {Master(id::kCuePoint,
                              {Uint(id::kCueTime, 1000),
                               Master(id::kCueTrackPositions,
                                      {Uint(id::kCueTrack, 1), Uint(id::kCueClusterPosition, position)})})};
        EXPECT_EQ("0/1:00", SeekTo(Started(Open(file.Build()), 0), 6000000));
    }
}

}  // namespace
}  // namespace testing_support
