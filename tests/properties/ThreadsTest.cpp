// Each source of one extractor on a thread of its own, as players have it. The thread sanitizer watches; and
// what a thread reads is what it would have read alone.
#include <media/stagefright/MediaBuffer.h>
#include <media/stagefright/MediaErrors.h>
#include <media/stagefright/MediaExtractor.h>
#include <media/stagefright/MediaSource.h>
#include <media/stagefright/MetaData.h>
#include <media/stagefright/foundation/AMessage.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "properties/Measure.h"
#include "properties/Sanitizers.h"
#include "matroska/PluginExports.h"
#include "support/FaultySource.h"
#include "support/Listing.h"

// libutils is not built with the sanitizer, which so does not see that its last release of an object comes
// after all others: every destructor that runs there would be reported. Uses of live objects still are.
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_suppressions() {
    return "race:android::RefBase::decStrong\n";
}

namespace testing_support {
namespace {

using android::MediaExtractor;
using android::MediaSource;
using android::sp;

constexpr size_t kTracks = 4;
constexpr uint64_t kClusters = IS_SANITIZED ? 60 : 200;

// Three tracks of sound and pictures and one of inflated frames, side by side in many Clusters.
const Document& File() {
    static const Document file = [] {
        Elements children = {
            Info(kClusters * 100),
            Master(id::kTracks, {Mpeg2Track(1), Mp3Track(2), Mp3Track(3),
                                 Mpeg2Track(4, {Master(id::kContentEncodings, {Encoding(0, 0, 0)})})})};
        Elements cues;
        for (uint64_t i = 0; i < kClusters; ++i) {
            const auto seed = static_cast<uint8_t>(i);
            Elements blocks;
            for (int16_t k = 0; k < 4; ++k) {
                for (uint64_t track = 1; track < kTracks; ++track) {
                    blocks.push_back(SimpleBlock(track, static_cast<int16_t>(k * 20), k == 0 ? kKeyFrame : 0,
                                                 Pattern(20 + track, seed)));
                }
                blocks.push_back(
                    SimpleBlock(4, static_cast<int16_t>(k * 20), kKeyFrame, Zlib(Bytes(500, seed))));
            }
            children.push_back(Cluster(i * 100, blocks).Label("cluster " + std::to_string(i)));
            cues.push_back(CuePoint(i * 100, 1, "cluster " + std::to_string(i)));
        }
        children.insert(children.begin() + 2, Master(id::kCues, cues));
        return Write({EbmlHeader(), Segment(children)});
    }();
    return file;
}

sp<MediaExtractor> OpenFile() {
    return android::createInstance(sp<android::DataSource>(new FaultySource(File().bytes)), nullptr);
}

// Plays a track: reads, and now and then seeks, asks for the format, or stops and starts.
std::vector<Unit> Play(const sp<MediaSource>& source, uint32_t seed) {
    std::vector<Unit> units;
    source->start(nullptr);
    for (uint32_t step = 0; step < 400; ++step) {
        seed = seed * 1664525 + 1013904223;
        const uint32_t choice = seed >> 24;
        MediaSource::ReadOptions options;
        if (choice < 20) options.setSeekTo(static_cast<int64_t>((seed >> 4) % (kClusters * 100000)));
        if (choice >= 20 && choice < 25) options.setLateBy(600000);
        if (choice >= 25 && choice < 40) (void)source->getFormat();
        if (choice == 40) {
            source->stop();
            source->start(nullptr);
        }
        Unit unit;
        if (ReadUnit(source, &unit, &options) == android::OK) units.push_back(unit);
    }
    source->stop();
    return units;
}

TEST(Threads, SourcesOnThreadsReadWhatTheyReadAlone) {
    std::vector<Unit> alone[kTracks], together[kTracks];
    for (size_t i = 0; i < kTracks; ++i) {
        const sp<MediaExtractor> extractor = OpenFile();
        ASSERT_EQ(kTracks, extractor->countTracks());
        alone[i] = Play(extractor->getTrack(i), static_cast<uint32_t>(i));
        ASSERT_LT(100u, alone[i].size());
    }
    const sp<MediaExtractor> extractor = OpenFile();
    std::vector<std::thread> threads;
    for (size_t i = 0; i < kTracks; ++i) {
        const sp<MediaSource> source = extractor->getTrack(i);
        threads.emplace_back(
            [source, i, &together] { together[i] = Play(source, static_cast<uint32_t>(i)); });
    }
    for (std::thread& thread : threads) thread.join();
    for (size_t i = 0; i < kTracks; ++i) EXPECT_EQ(alone[i], together[i]) << "track " << i;
}

// Subtitles arrive through another track's reads while their own source is asked for them: each event comes
// once, whatever the order.
TEST(Threads, SubtitlesAreDrainedWhileTheyArrive) {
    constexpr int kEvents = 300;
    Elements blocks;
    for (int i = 0; i < kEvents; ++i) {
        blocks.push_back(BlockGroup(2, static_cast<int16_t>(i * 10), Text("event " + std::to_string(i)),
                                    {Uint(id::kBlockDuration, 5)}));
        blocks.push_back(SimpleBlock(1, static_cast<int16_t>(i * 10), kKeyFrame, Hex("AA")));
    }
    const Document file = Write(
        {EbmlHeader(),
         Segment({Info(10000), Master(id::kTracks, {Mpeg2Track(1), TextTrack(2)}), Cluster(0, blocks)})});
    const sp<MediaExtractor> extractor =
        android::createInstance(sp<android::DataSource>(new FaultySource(file.bytes)), nullptr);
    const sp<MediaSource> pictures = extractor->getTrack(0), words = extractor->getTrack(1);
    pictures->start(nullptr);
    words->start(nullptr);
    std::atomic<bool> isDone{false};
    std::vector<Unit> events;
    std::thread reader([&] {
        for (bool isLast = false;;) {
            Unit unit;
            if (ReadUnit(words, &unit) == android::OK) {
                events.push_back(unit);
            } else if (isLast) {
                break;
            } else {
                isLast = isDone;
                std::this_thread::yield();
            }
        }
    });
    EXPECT_EQ(static_cast<size_t>(kEvents), ReadAll(pictures).size());
    isDone = true;
    reader.join();
    ASSERT_EQ(static_cast<size_t>(kEvents), events.size());
    for (int i = 0; i < kEvents; ++i) {
        ASSERT_EQ(Text("event " + std::to_string(i)), events[static_cast<size_t>(i)].bytes);
        ASSERT_EQ(i * 10000 + 5000, events[static_cast<size_t>(i)].endUs);
    }
}

}  // namespace
}  // namespace testing_support
