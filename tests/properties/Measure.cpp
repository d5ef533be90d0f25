#include "properties/Measure.h"

#include <android/log.h>
#include <media/stagefright/MediaBuffer.h>
#include <media/stagefright/MediaExtractor.h>
#include <media/stagefright/MediaSource.h>
#include <media/stagefright/MetaData.h>
#include <media/stagefright/foundation/AMessage.h>
#include <pthread.h>

#include <algorithm>
#include <map>

#include "properties/HeapMeter.h"
#include "properties/Sanitizers.h"
#include "matroska/MatroskaExtExtractor.h"
#include "matroska/PluginExports.h"

namespace testing_support {

using android::MediaBuffer;
using android::MediaExtractor;
using android::MediaSource;
using android::sp;
using MatroskaExtReader::LossKind;

namespace {

constexpr size_t kMostUnits = 5000;  // of one track, one pass
constexpr int kMostFailures = 16;    // units that cannot be read, gone past in one pass
constexpr size_t kMostTracks = 8;    // that are read; all are counted

constexpr size_t kStack = IS_SANITIZED ? 8 * budget::kStack : budget::kStack;

std::string TextOf(const MatroskaExtReader::Losses& losses) {
    std::map<LossKind, size_t> counts;
    for (const auto& loss : losses.List()) ++counts[loss.kind];
    std::string text;
    for (const auto& count : counts) {
        text += (text.empty() ? "" : ", ") + std::string(MatroskaExtReader::TextOf(count.first).identifier) +
                " " + std::to_string(count.second);
    }
    return losses.Count() > losses.List().size() ? text + " and more" : text;
}

// Counts of one phase, in the source and on the heap.
class Phase {
  public:
    Phase(const HostileSource& source, HeapMeter* heap)
        : mSource(source), mHeap(heap), mReads(source.Reads()), mBytes(source.BytesRead()) {
        mHeap->Restart();
    }
    Cost End() const { return {mSource.Reads() - mReads, mSource.BytesRead() - mBytes, mHeap->Peak()}; }

  private:
    const HostileSource& mSource;
    HeapMeter* mHeap;
    uint64_t mReads, mBytes;
};

// One unit more, or false: at the end, or after too many failures.
bool ReadOne(const sp<MediaSource>& source, const MediaSource::ReadOptions* options, Outcome* outcome) {
    MediaBuffer* buffer = nullptr;
    if (source->read(&buffer, options) != android::OK) return false;
    EXPECT_NE(nullptr, buffer);
    if (buffer == nullptr) return false;
    EXPECT_LE(buffer->range_offset() + buffer->range_length(), buffer->size());
    outcome->largestUnit = std::max<uint64_t>(outcome->largestUnit, buffer->size());
    buffer->release();
    return true;
}

size_t ReadPass(const sp<MediaSource>& source, Outcome* outcome) {
    size_t units = 0;
    for (int failures = 0; failures < kMostFailures && units < kMostUnits;) {
        if (ReadOne(source, nullptr, outcome)) {
            ++units;
        } else {
            ++failures;
        }
    }
    return units;
}

void SeekAbout(const sp<MediaSource>& source, Outcome* outcome) {
    constexpr int64_t kTimes[] = {0, 1, 40000, 5000000, -1, INT64_MAX, INT64_MIN, 20000};
    for (const int64_t timeUs : kTimes) {
        MediaSource::ReadOptions options;
        options.setSeekTo(timeUs, MediaSource::ReadOptions::SEEK_CLOSEST_SYNC);
        if (timeUs > 1) options.setLateBy(timeUs);
        ReadOne(source, &options, outcome);
        ReadOne(source, nullptr, outcome);
    }
}

void ReadEverything(const sp<MediaExtractor>& extractor, Outcome* outcome) {
    const size_t count = std::min(outcome->tracks, kMostTracks);
    for (size_t i = 0; i < count; ++i) {
        const sp<MediaSource> source = extractor->getTrack(i);
        source->start(nullptr);
        outcome->units += ReadPass(source, outcome);
        source->stop();
    }
    outcome->losses = TextOf(static_cast<android::MatroskaExtExtractor*>(extractor.get())->File()->Losses);
    for (size_t i = 0; i < count; ++i) {
        const sp<MediaSource> source = extractor->getTrack(i);
        source->start(nullptr);
        SeekAbout(source, outcome);
    }
    (void)extractor->getMetaData();
    if (outcome->tracks > 0) (void)extractor->getTrackMetaData(0, MediaExtractor::kIncludeExtensiveMetaData);
}

void CheckBudgets(const Outcome& outcome, const HostileSource& source) {
    const uint64_t n = source.Size();
    const uint64_t mostReads = budget::kReads + budget::kReadsPerByte * n;
    const uint64_t mostHeap = std::min(budget::kMostHeap, budget::kHeap + budget::kHeapPerByte * n);
    EXPECT_LE(outcome.sniffing.reads, mostReads);
    EXPECT_LE(outcome.opening.reads, mostReads);
    EXPECT_LE(outcome.sniffing.heap, mostHeap);
    EXPECT_LE(outcome.opening.heap, mostHeap);
    EXPECT_LE(outcome.reading.heap, mostHeap + budget::kHeapPerLargestUnit * outcome.largestUnit);
}

Outcome Throw(const Content& content, Size size, bool reads) {
    const sp<HostileSource> source = new HostileSource(content);
    if (size == Size::kHidden) source->HideSize();
    Outcome outcome;
    OnSmallStack([&] {
        HeapMeter heap;
        {
            const Phase phase(*source, &heap);
            android::String8 mime;
            float confidence = 0;
            sp<android::AMessage> meta;
            (void)android::Sniffer(source, &mime, &confidence, &meta);
            outcome.sniffing = phase.End();
        }
        const Phase opening(*source, &heap);
        sp<MediaExtractor> extractor = android::createInstance(source, nullptr);
        outcome.opening = opening.End();
        outcome.tracks = extractor->countTracks();
        outcome.losses = TextOf(static_cast<android::MatroskaExtExtractor*>(extractor.get())->File()->Losses);
        outcome.visits = source->MostVisits();
        if (reads) {
            const Phase reading(*source, &heap);
            ReadEverything(extractor, &outcome);
            outcome.reading = reading.End();
        }
        extractor.clear();
        CheckBudgets(outcome, *source);
    });
    return outcome;
}

thread_local bool gIsOnSmallStack = false;

void* RunWork(void* work) {
    gIsOnSmallStack = true;
    (*static_cast<const std::function<void()>*>(work))();
    return nullptr;
}

}  // namespace

std::string Outcome::Text() const {
    std::string text = std::to_string(tracks) + (tracks == 1 ? " track, " : " tracks, ");
    text += std::to_string(units) + (units == 1 ? " unit" : " units");
    return losses.empty() ? text : text + "; " + losses;
}

Outcome OpenHostile(const Content& content, Size size) {
    return Throw(content, size, false);
}
Outcome ThrowHostile(const Content& content, Size size) {
    return Throw(content, size, true);
}
Outcome ThrowHostile(const Bytes& bytes, Size size) {
    return Throw({Stretch{bytes}}, size, true);
}

void OnSmallStack(const std::function<void()>& work) {
    if (gIsOnSmallStack) {
        work();
        return;
    }
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    ASSERT_EQ(0, pthread_attr_setstacksize(&attributes, kStack));
    pthread_t thread;
    auto* argument = const_cast<std::function<void()>*>(&work);
    ASSERT_EQ(0, pthread_create(&thread, &attributes, &RunWork, argument));
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

}  // namespace testing_support
