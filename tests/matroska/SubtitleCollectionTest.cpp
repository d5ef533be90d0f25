// Subtitles: collected while the master track is read, merged, handed out by track index.
#include <host/AllocationLimit.h>

#include "matroska/MatroskaExtExtractor.h"
#include "matroska/MatroskaFixture.h"

namespace testing_support {
namespace {

Element Event(uint64_t track, int16_t time, const std::string& text, uint64_t duration = 10) {
    return BlockGroup(track, time, Text(text), {Uint(id::kBlockDuration, duration)});
}
Element Picture(int16_t time) {
    return SimpleBlock(1, time, kKeyFrame, Hex("AA"));
}

// "start-end sync text" of what is queued, one a line.
std::string Drain(const sp<MediaSource>& source) {
    std::string text;
    Unit unit;
    status_t status;
    while ((status = ReadUnit(source, &unit)) == android::OK) {
        text += std::to_string(unit.timeUs) + "-" + std::to_string(unit.endUs) + " " +
                std::to_string(unit.sync) + " " + std::string(unit.bytes.begin(), unit.bytes.end()) + "|";
        unit = Unit();
    }
    EXPECT_EQ(android::NOT_ENOUGH_DATA, status);
    return text;
}

struct Opened {
    Opened(const Elements& tracks, const Elements& blocks)
        : extractor(Open(Movie(tracks, {Cluster(100, blocks)}))) {
        for (size_t i = 0; i < extractor->countTracks(); ++i) sources.push_back(Started(extractor, i));
    }
    std::string Read(size_t i) { return ReadOne(sources[i]); }
    sp<MediaExtractor> extractor;
    std::vector<sp<MediaSource>> sources;
};

const char kHello[] = "0,0,Default,,0,0,0,,Hello";
const char kWorld[] = "1,0,Default,,0,0,0,,World";

TEST(Subtitles, AppearAsTheMasterTrackPassesThem) {
    Opened open({Mpeg2Track(1), TextTrack(2)},
                {Picture(0), Event(2, 5, "one", 7), SimpleBlock(2, 8, 0, Text("two")), Picture(10),
                 Event(2, 15, "three")});
    EXPECT_EQ("", Drain(open.sources[1]));
    open.Read(0);
    EXPECT_EQ("", Drain(open.sources[1]));
    open.Read(0);
    EXPECT_EQ("105000-112000 1 one|108000-108000 0 two|", Drain(open.sources[1]));
    EXPECT_EQ("-1011", open.Read(0));
    EXPECT_EQ("115000-125000 1 three|", Drain(open.sources[1]));
}

// Deliberate: only the low 32 bits of a foreign TrackNumber count. A reference that is too long for a number
// still makes a frame no key frame.
TEST(Subtitles, OddNumbersOfABlockAreCut) {
    const uint64_t foreign = (uint64_t{1} << 32) + 2;
    Opened open({Mpeg2Track(1), TextTrack(2)},
                {BlockGroup(foreign, 0, Text("cut"), {Bin(id::kReferenceBlock, Bytes(9, 1))}), Picture(10)});
    open.Read(0);
    EXPECT_EQ("100000-100000 0 cut|", Drain(open.sources[1]));
}

TEST(Subtitles, EventsWithFieldsAreMerged) {
    const std::string first(kHello), second(kWorld);
    const struct {
        const char* name;
        Elements tracks;
        Elements blocks;
        std::string drained;  // of the source at index 1, at the end
    } rows[] = {
        {"two events of one track",
         {Mpeg2Track(1), TextTrack(2, "S_TEXT/ASS")},
         {Event(2, 0, first), Event(2, 20, second, 30)},
         "100000-150000 1 " + second + "\nHello|"},
        {"three: the newest fields, the older texts below",
         {Mpeg2Track(1), TextTrack(2, "S_TEXT/ASS")},
         {Event(2, 0, first), Event(2, 20, second), Event(2, 30, "2,0,Default,,0,0,0,,!")},
         "100000-140000 1 2,0,Default,,0,0,0,,!\nWorld\nHello|"},
        {"the flag of the newest",
         {Mpeg2Track(1), TextTrack(2, "S_TEXT/ASS")},
         {Event(2, 0, first),
          BlockGroup(2, 20, Text(second), {Uint(id::kBlockDuration, 30), Int(id::kReferenceBlock, -1, 1)})},
         "100000-150000 0 " + second + "\nHello|"},
        {"plain text never",
         {Mpeg2Track(1), TextTrack(2)},
         {Event(2, 0, "a"), Event(2, 20, "b")},
         "100000-110000 1 a|120000-130000 1 b|"},
        {"no text",
         {Mpeg2Track(1), TextTrack(2)},
         {Event(2, 0, "a,,,,,,,,"), Event(2, 20, "")},
         "100000-130000 1 \n|"},
        {"plain text with eight commas, though",
         {Mpeg2Track(1), TextTrack(2)},
         {Event(2, 0, "a,,,,,,,,x"), Event(2, 20, "b")},
         "100000-130000 1 b\nx|"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Opened open(row.tracks, row.blocks);
        EXPECT_EQ("-1011", open.Read(0));
        EXPECT_EQ(row.drained, Drain(open.sources[1]));
    }
}

// The length of each event that is there when the file was read.
std::vector<size_t> MergedLengths(const std::string& first, const std::string& second) {
    Opened open({Mpeg2Track(1), TextTrack(2, "S_TEXT/ASS")}, {Event(2, 0, first), Event(2, 20, second)});
    EXPECT_EQ("-1011", open.Read(0));
    std::vector<size_t> lengths;
    for (const Unit& unit : ReadAll(open.sources[1])) lengths.push_back(unit.bytes.size());
    return lengths;
}

TEST(Subtitles, MergedEventsHave64KiBAtTheMostAndNeedMemory) {
    const size_t most = 65536, kept = 6;  // "\nHello"
    EXPECT_EQ((std::vector<size_t>{most}), MergedLengths(kHello, std::string(most - kept, 'x')));
    EXPECT_EQ((std::vector<size_t>{25, most - kept + 1}),
              MergedLengths(kHello, std::string(most - kept + 1, 'x')));
    EXPECT_EQ((std::vector<size_t>{106}), MergedLengths(kHello, std::string(100, 'x')));
    const android::host::ScopedAllocationLimit limit(105);  // enough for each alone
    EXPECT_EQ((std::vector<size_t>{25, 100}), MergedLengths(kHello, std::string(100, 'x')));
}

// Opening looks into the first frame of this track, past an event that is not to be collected then.
TEST(Subtitles, NothingIsCollectedWhileAFileIsOpened) {
    const Element track = Track(1, kVideoType, "V_MS/VFW/FOURCC", {Private(BitmapHeader("XVID"))});
    Opened open({track, TextTrack(2)}, {Event(2, 0, "one"), Picture(5)});
    open.extractor->getTrackMetaData(0, MediaExtractor::kIncludeExtensiveMetaData);
    EXPECT_EQ("", Drain(open.sources[1]));
    open.Read(0);
    EXPECT_EQ("100000-110000 1 one|", Drain(open.sources[1]));
}

TEST(Subtitles, OfTwoTracksThatAlternateAreNotMerged) {
    Opened open({Mpeg2Track(1), TextTrack(2, "S_TEXT/ASS"), TextTrack(3, "S_TEXT/ASS")},
                {Event(3, 0, kHello), Event(2, 10, kWorld), Event(3, 20, kHello)});
    // Deliberate: they are not counted.
    EXPECT_EQ(0u, static_cast<android::MatroskaExtExtractor*>(open.extractor.get())->SubtitleCount());
    EXPECT_EQ("-1011", open.Read(0));
    // Records of the other track in front are dropped, not kept for it.
    EXPECT_EQ("110000-120000 1 " + std::string(kWorld) + "|", Drain(open.sources[1]));
    EXPECT_EQ("", Drain(open.sources[2]));
}

TEST(Subtitles, OnlyTheMasterTrackCollects) {
    Opened open({Mpeg2Track(1), TextTrack(2), Mp3Track(3)},
                {Event(2, 0, "one"), SimpleBlock(3, 0, kKeyFrame, Hex("BB"))});
    EXPECT_EQ("100000/1:bb", open.Read(2));
    EXPECT_EQ("", Drain(open.sources[1]));
    EXPECT_EQ("-1011", open.Read(0));
    EXPECT_EQ("100000-110000 1 one|", Drain(open.sources[1]));
}

TEST(Subtitles, ASeekAndAnyStopEmptyTheQueue) {
    const Elements tracks = {Mpeg2Track(1), TextTrack(2), Mp3Track(3)};
    Opened seek(tracks, {Event(2, 0, "one")});
    EXPECT_EQ("-1011", seek.Read(0));
    MediaSource::ReadOptions options;
    options.setSeekTo(0);
    EXPECT_EQ("-61", ReadOne(seek.sources[1], &options));
    EXPECT_EQ("", Drain(seek.sources[1]));

    Opened stop(tracks, {Event(2, 0, "one")});
    EXPECT_EQ("-1011", stop.Read(0));
    stop.sources[2]->stop();
    EXPECT_EQ("", Drain(stop.sources[1]));
}

TEST(Subtitles, AQueueThatNobodyDrainsKeepsTheNewest8192) {
    Elements blocks;
    for (int i = 0; i < 9000; ++i) blocks.push_back(Event(2, static_cast<int16_t>(i), std::to_string(i)));
    Opened open({Mpeg2Track(1), TextTrack(2)}, blocks);
    EXPECT_EQ("-1011", open.Read(0));
    Unit unit;
    ASSERT_EQ(android::OK, ReadUnit(open.sources[1], &unit));
    EXPECT_EQ("808", std::string(unit.bytes.begin(), unit.bytes.end()));
    EXPECT_EQ(8191u, ReadAll(open.sources[1]).size());
}

}  // namespace
}  // namespace testing_support
