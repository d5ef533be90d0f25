// The sources of one extractor: start codes, interleaved reading, lifetimes.
#include "matroska/MatroskaFixture.h"

#include <random>
#include <thread>

namespace testing_support {
namespace {

TEST(StartCodes, LengthPrefixesAreRewrittenAsTheFirstFrameDecides) {
    const Element hevc = Track(1, kVideoType, "V_MPEGH/ISO/HEVC",
                               {Video(64, 48), Bin(id::kCodecPrivate, Hex("010203040506"))});
    const struct {
        const char* name;
        Element track;
        std::vector<const char*> stored;
        std::vector<const char*> delivered;
    } rows[] = {
        {"two units", AvcTrack(), {"00000002AABB00000001CC"}, {"00000001aabb00000001cc"}},
        {"HEVC too", hevc, {"00000002AABB"}, {"00000001aabb"}},
        {"start codes stay, for the life of the source",
         AvcTrack(),
         {"0000000165AA", "00000002AABB"},
         {"0000000165aa", "00000002aabb"}},
        {"prefixes first: all are rewritten",
         AvcTrack(),
         {"00000002AABB", "000000020102"},
         {"00000001aabb", "000000010102"}},
        {"a three-byte start code is a prefix",
         AvcTrack(),
         {"00000102AABB", "00000002AABB"},
         {"00000102aabb", "00000001aabb"}},
        {"cut to the last whole unit", AvcTrack(), {"00000002AABB 00000009CC"}, {"00000001aabb"}},
        {"up to four bytes past the end are taken as whole",
         AvcTrack(),
         {"00000002AABB 00000005CC"},
         {"00000001aabb00000001cc"}},
        {"five are not", AvcTrack(), {"00000002AABB 00000006CC"}, {"00000001aabb"}},
        {"a negative length stops", AvcTrack(), {"00000002AABB 80000000CC"}, {"00000001aabb"}},
        {"nothing whole: as it is", AvcTrack(), {"0000FFFFAABB"}, {"0000ffffaabb"}},
        {"too short to tell: rewriting is chosen",
         AvcTrack(),
         {"AABB", "00000001CC"},
         {"aabb", "00000001cc"}},
        {"trailing bytes are cut", AvcTrack(), {"00000002AABB 0000"}, {"00000001aabb"}},
        {"other video is left alone", Mpeg2Track(), {"00000002AABB"}, {"00000002aabb"}},
        {"audio is left alone", Mp3Track(1), {"00000002AABB"}, {"00000002aabb"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Elements blocks;
        std::string expected;
        for (size_t i = 0; i < row.stored.size(); ++i) {
            blocks.push_back(SimpleBlock(1, static_cast<int16_t>(i), kKeyFrame, Hex(row.stored[i])));
            expected += std::to_string(i * 1000) + "/1:" + row.delivered[i] + " ";
        }
        EXPECT_EQ(expected + "-1011", Units(Started(Open(Movie({row.track}, {Cluster(0, blocks)})), 0)));
    }
}

TEST(StartCodes, TheChoiceOutlivesASeek) {
    const Document file =
        Movie({AvcTrack()}, {Cluster(0, {SimpleBlock(1, 0, kKeyFrame, Hex("0000000165")),
                                         SimpleBlock(1, 1, kKeyFrame, Hex("00000002AABB"))})});
    const sp<MediaSource> source = Started(Open(file), 0);
    EXPECT_EQ("0/1:0000000165", ReadOne(source));
    source->stop();
    source->start(nullptr);
    EXPECT_EQ("0/1:0000000165 1000/1:00000002aabb -1011", Units(source));
}

// Three tracks over clusters of known and unknown size, with groups, laces and blocks of nobody.
Document Mixed(bool live) {
    Elements children = {Info(5000), Master(id::kTracks, {Mpeg2Track(1), Mp3Track(2), Mp3Track(3)})};
    for (uint64_t c = 0; c < 8; ++c) {
        Elements blocks;
        for (int i = 0; i < 40; ++i) {
            const auto seed = static_cast<uint8_t>(c * 40 + static_cast<uint64_t>(i));
            const auto time = static_cast<int16_t>(i * 10);
            const uint64_t track = 1 + static_cast<uint64_t>(i * 7 % 11 % 4);  // track 4 is in no table
            if (i % 5 == 0) {
                blocks.push_back(BlockGroup(track, time, Pattern(20, seed)));
            } else if (i % 7 == 0) {
                blocks.push_back(
                    SimpleBlock(track, time, kKeyFrame, Lacing::kEbml, {Pattern(5, seed), Pattern(9, seed)}));
            } else {
                blocks.push_back(SimpleBlock(track, time, kKeyFrame, Pattern(11, seed)));
            }
        }
        const Element cluster = Cluster(c * 500, blocks);
        children.push_back(live ? cluster.UnknownSize(8) : cluster);
    }
    return Write({EbmlHeader(), live ? Segment(children).UnknownSize(8) : Segment(children)});
}

std::vector<std::vector<Unit>> OneByOne(const Document& file) {
    std::vector<std::vector<Unit>> tracks;
    for (size_t i = 0; i < 3; ++i) tracks.push_back(ReadAll(Started(Open(file), i)));
    return tracks;
}

TEST(Sources, AnyInterleavingDeliversWhatReadingOneByOneDoes) {
    for (bool live : {false, true}) {
        SCOPED_TRACE(live);
        const Document file = Mixed(live);
        const auto expected = OneByOne(file);
        ASSERT_GT(expected[2].size(), 50u);
        for (uint32_t seed = 0; seed < 20; ++seed) {
            std::mt19937 random(seed);
            const sp<MediaExtractor> extractor = Open(file);
            std::vector<sp<MediaSource>> sources;
            std::vector<std::vector<Unit>> units(3);
            for (size_t i = 0; i < 3; ++i) sources.push_back(Started(extractor, i));
            for (std::vector<bool> ended(3); !(ended[0] && ended[1] && ended[2]);) {
                const size_t track = random() % 3;
                for (uint32_t run = random() % 30; run > 0 && !ended[track]; --run) {
                    Unit unit;
                    ended[track] = ReadUnit(sources[track], &unit) != android::OK;
                    if (!ended[track]) units[track].push_back(unit);
                }
            }
            EXPECT_EQ(expected, units) << "seed " << seed;
        }
    }
}

TEST(Sources, AnotherTrackReadToItsEndChangesNothing) {
    for (bool live : {false, true}) {
        const Document file = Mixed(live);
        const auto expected = OneByOne(file);
        for (size_t at = 0; at < expected[0].size(); at += 5) {
            const sp<MediaExtractor> extractor = Open(file);
            const sp<MediaSource> source = Started(extractor, 0);
            std::vector<Unit> units = ReadAll(source, nullptr, at);
            EXPECT_EQ(expected[1], ReadAll(Started(extractor, 1)));
            for (const Unit& unit : ReadAll(source)) units.push_back(unit);
            ASSERT_EQ(expected[0], units) << "after " << at;
        }
    }
}

TEST(Sources, SeveralSourcesOfOneTrackAreIndependent) {
    const Document file = Mixed(false);
    const sp<MediaExtractor> extractor = Open(file);
    const sp<MediaSource> first = Started(extractor, 0), second = Started(extractor, 0);
    const std::vector<Unit> firstHalf = ReadAll(first, nullptr, 10);
    EXPECT_EQ(firstHalf, ReadAll(second, nullptr, 10));
    EXPECT_EQ(ReadAll(first), ReadAll(second));
}

TEST(Sources, ThreadsGetTheSameUnits) {
    const Document file = Mixed(false);
    const auto expected = OneByOne(file);
    const sp<MediaExtractor> extractor = Open(file);
    std::vector<std::vector<Unit>> units(3);
    std::vector<std::thread> threads;
    for (size_t i = 0; i < 3; ++i) {
        threads.emplace_back([&, i] {
            const sp<MediaSource> source = Started(extractor, i);
            units[i] = ReadAll(source);
            source->getFormat();
            source->stop();
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(expected, units);
}

TEST(Sources, OutliveTheExtractorThatTheHostHolds) {
    const Document file = Mixed(false);
    const auto expected = OneByOne(file);
    sp<MediaSource> source;
    android::wp<MediaExtractor> watched;
    {
        const sp<MediaExtractor> extractor = Open(file);
        watched = extractor;
        source = Started(extractor, 0);
    }
    EXPECT_EQ(expected[0], ReadAll(source));
    EXPECT_NE(nullptr, watched.promote().get());
    source.clear();
    EXPECT_EQ(nullptr, watched.promote().get());
}

}  // namespace
}  // namespace testing_support
