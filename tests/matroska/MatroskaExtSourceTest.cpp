// The sources of one extractor: start codes, interleaved reading, lifetimes.
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <thread>

#include "matroska/MatroskaExtExtractor.h"
#include "matroska/MatroskaExtSource.h"
#include "matroska/MatroskaFixture.h"
#include "support/Oddities.h"

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

TEST(Sources, OutliveTheExtractorThatTheHostHolds) {
    const Bytes file = OddityNamed("cues-in-front");
    const std::vector<Unit> expected = ReadAll(Started(Open(file), 0));
    sp<MediaSource> source;
    android::wp<MediaExtractor> watched;
    {
        const sp<MediaExtractor> extractor = Open(file);
        watched = extractor;
        source = Started(extractor, 0);
    }
    EXPECT_EQ(expected, ReadAll(source));
    EXPECT_NE(nullptr, watched.promote().get());
    source.clear();
    EXPECT_EQ(nullptr, watched.promote().get());
}

// Sleeps, or is over.
bool IsAtRest(pid_t thread) {
    std::ifstream stat("/proc/self/task/" + std::to_string(thread) + "/stat");
    const std::string line{std::istreambuf_iterator<char>(stat), {}};
    return line.empty() || line[line.rfind(')') + 2] == 'S';
}

// What a source holds is shared with others, whose reads change it.
TEST(Sources, AreLetGoUnderTheLock) {
    const Document file = Movie({Mp3Track(1)}, {Cluster(0, {SimpleBlock(1, 0, kKeyFrame, Hex("AA"))})});
    const sp<MediaExtractor> opened = Open(file);
    android::Mutex lock;
    sp<MediaSource> source = new android::MatroskaExtSource(
        static_cast<android::MatroskaExtExtractor*>(opened.get()), 0, 0, 0, &lock, 2);
    source->start(nullptr);
    EXPECT_EQ("0/1:aa -1011", Units(source));
    std::atomic<pid_t> thread{0};
    std::atomic<bool> isGone{false};
    lock.lock();
    std::thread other([&] {
        thread = static_cast<pid_t>(syscall(SYS_gettid));
        source.clear();
        isGone = true;
    });
    while (thread == 0 || !IsAtRest(thread)) std::this_thread::yield();
    EXPECT_FALSE(isGone);
    lock.unlock();
    other.join();
    EXPECT_TRUE(isGone);
}

}  // namespace
}  // namespace testing_support
