// Subtitles while the master track jumps about, and how much an undrained queue keeps.
#include "matroska/MatroskaFixture.h"

namespace testing_support {
namespace {

Element Event(uint64_t track, int16_t time, const Bytes& text) {
    return BlockGroup(track, time, text, {Uint(id::kBlockDuration, 10)});
}
Element Event(uint64_t track, int16_t time, const std::string& text) {
    return Event(track, time, Text(text));
}
Element Picture(int16_t time, bool key = true) {
    return SimpleBlock(1, time, key ? kKeyFrame : uint8_t{0}, {0xAA});
}

// Three Clusters, a second apart; each has an event, the picture, and an event behind it.
Document Spoken(const std::string& codec, const std::string& prefix, const Elements& moreTracks = {}) {
    Elements tracks = {Mpeg2Track(1), TextTrack(2, codec)};
    tracks.insert(tracks.end(), moreTracks.begin(), moreTracks.end());
    Elements points, clusters;
    for (uint64_t second = 0; second < 3; ++second) {
        const std::string label = "second " + std::to_string(second), n = std::to_string(second);
        points.push_back(CuePoint(second * 1000, 1, label));
        clusters.push_back(Cluster(second * 1000, {Event(2, 0, prefix + n + "a"), Picture(10),
                                                   Picture(20, false), Event(2, 30, prefix + n + "b")})
                               .Label(label));
    }
    Elements children = {Info(10000), Master(id::kTracks, tracks), Master(id::kCues, points)};
    children.insert(children.end(), clusters.begin(), clusters.end());
    return Write({EbmlHeader(), Segment(children)});
}

struct Player {
    explicit Player(const Document& file) : extractor(Open(file)) {
        for (size_t i = 0; i < extractor->countTracks(); ++i) sources.push_back(Started(extractor, i));
    }
    // The master track's next unit, after a seek unless `toUs` is negative.
    void Read(int64_t toUs = -1) {
        MediaSource::ReadOptions options;
        if (toUs >= 0) options.setSeekTo(toUs);
        last = ReadOne(sources[0], &options);
    }
    // "ms text " of each event that is there.
    std::string Drain(size_t index = 1) {
        std::string text;
        Unit unit;
        while (ReadUnit(sources[index], &unit) == android::OK)
            text += std::to_string(unit.timeUs / 1000) + " " +
                    std::string(unit.bytes.begin(), unit.bytes.end()) + "|";
        return text;
    }
    sp<MediaExtractor> extractor;
    std::vector<sp<MediaSource>> sources;
    std::string last;
};

TEST(Queue, WhatASeekPassesOverIsNotCollected) {
    Player player(Spoken("S_TEXT/UTF8", ""));
    player.Read();
    EXPECT_EQ("0 0a|", player.Drain());
    player.Read(2500000);
    EXPECT_EQ("2010000/1:aa", player.last);
    EXPECT_EQ("", player.Drain());  // neither the events between nor the one that the look went past
    player.Read();
    player.Read();
    EXPECT_EQ("-1011", player.last);
    EXPECT_EQ("2030 2b|", player.Drain());
    player.Read(0);  // the start of the file is read, not searched
    EXPECT_EQ("0 0a|", player.Drain());
}

TEST(Queue, EventsStayQueuedThroughTheMasterTracksSeek) {
    Player player(Spoken("S_TEXT/UTF8", ""));
    player.Read();
    player.Read(1500000);
    player.Read();
    player.Read();  // the next Cluster's picture, behind two events
    EXPECT_EQ("0 0a|1030 1b|2000 2a|", player.Drain());
}

TEST(Queue, MergingGoesByWhatIsQueuedLast) {
    const std::string fields = "0,0,Default,,0,0,0,,";
    Player drained(Spoken("S_TEXT/ASS", fields));
    drained.Read();
    EXPECT_EQ("0 " + fields + "0a|", drained.Drain());
    drained.Read();
    drained.Read();
    // The event before it was handed out: the next has nothing to merge with, the one behind that has.
    EXPECT_EQ("30 " + fields + "1a\n0b|", drained.Drain());

    Player jumping(Spoken("S_TEXT/ASS", fields));
    jumping.Read();
    jumping.Read(2500000);
    jumping.Read();
    jumping.Read();
    // Across a seek too: what is still queued takes the new event, with the old start.
    EXPECT_EQ("0 " + fields + "2b\n0a|", jumping.Drain());
}

// Deliberate: a record is for the source whose index is its TrackNumber less one. With a track in front that
// is not offered, numbers and indices part, and one track's events come out of another's source or of none.
TEST(Queue, NumbersThatDoNotFitTheIndicesDropEverything) {
    const Document file =
        Movie({Mpeg2Track(1), Track(2, kAudioType, "A_UNHEARD_OF"), TextTrack(3), TextTrack(4)},
              {Cluster(0, {Event(3, 0, "three"), Event(4, 1, "four"), Picture(5)})});
    Player player(file);
    ASSERT_EQ(3u, player.sources.size());
    player.Read();
    EXPECT_EQ("", player.Drain(1));  // looks for number 2, and drops all it finds
    EXPECT_EQ("", player.Drain(2));
    Player other(file);
    other.Read();
    EXPECT_EQ("0 three|", other.Drain(2));  // track 4's source gives the events of track 3
}

TEST(Queue, ThirtyTwoMegabytesAreKeptAtTheMost) {
    constexpr size_t kEvent = 11u << 20;
    Elements events;
    for (uint8_t i = 0; i < 4; ++i) events.push_back(Event(2, i, Bytes(kEvent, i)));
    Player player(Movie({Mpeg2Track(1), TextTrack(2)}, {Cluster(0, events)}));
    player.Read();
    std::string kept;
    for (const Unit& unit : ReadAll(player.sources[1])) {
        EXPECT_EQ(kEvent, unit.bytes.size());
        kept += std::to_string(unit.bytes.at(0)) + " ";
    }
    EXPECT_EQ("2 3 ", kept);  // the newest

    // One that is larger on its own is kept all the same.
    Player single(Movie({Mpeg2Track(1), TextTrack(2)}, {Cluster(0, {Event(2, 0, Bytes(kEvent * 3, 7))})}));
    single.Read();
    EXPECT_EQ(1u, ReadAll(single.sources[1]).size());
}

}  // namespace
}  // namespace testing_support
