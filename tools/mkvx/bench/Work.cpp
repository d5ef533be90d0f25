#include "bench/Work.h"

#include <media/stagefright/MediaBuffer.h>
#include <media/stagefright/MediaSource.h>
#include <media/stagefright/MetaData.h>
#include <zlib.h>
#include <deque>
#include <limits>
#include <utility>

#include "bench/Timer.h"
#include "matroska/MatroskaExtExtractor.h"
#include "matroska/MatroskaExtIterator.h"
#include "matroska/reader/MatroskaReader.h"
#include "seek/Targets.h"

namespace mkvx {
namespace {

using android::MatroskaExtExtractor;
using android::MatroskaExtIterator;
using android::MediaBuffer;
using android::sp;
using MatroskaExtReader::CMatroskaFile;
using MatroskaExtReader::TrackEntry;

constexpr uint64_t kVideoType = 1;

class Sink {
  public:
    Sink(SinkOptions options, Tallies& tallies) : mOptions(options), mTallies(tallies) {}

    // Looks at the unit as a consumer would, and gives it back. Returns its time.
    int64_t take(size_t track, MediaBuffer* buffer) {
        int64_t timeUs = 0;
        int32_t sync = 0;
        {
            const sp<android::MetaData> meta = buffer->meta_data();
            meta->findInt64(android::kKeyTime, &timeUs);
            meta->findInt32(android::kKeyIsSyncFrame, &sync);
        }
        const auto* bytes = static_cast<const uint8_t*>(buffer->data()) + buffer->range_offset();
        const size_t size = buffer->range_length();
        Tally& tally = mTallies[track];
        ++tally.units;
        tally.bytes += size;
        tally.keys += sync != 0;
        tally.timeSumUs += uint64_t(timeUs);
        if (size > 0) mTouched = mTouched + bytes[0] + bytes[size - 1];
        if (mOptions.crc) tally.crc = uint32_t(crc32_z(tally.crc, bytes, size));
        buffer->release();
        return timeUs;
    }

  private:
    const SinkOptions mOptions;
    Tallies& mTallies;
    volatile unsigned mTouched = 0;  // so that no compiler leaves the look out
};

std::vector<const TrackEntry*> entriesOf(const CMatroskaFile& file) {
    std::vector<const TrackEntry*> entries;
    const auto& tracks = file.Segment.Tracks;
    for (size_t i = 0; i < tracks.size(); ++i)
        for (size_t j = 0; j < tracks[i]->Entries.size(); ++j) entries.push_back(tracks[i]->Entries[j].get());
    return entries;
}

// The next unit, past those that cannot be read; null at the end. Each turn of the loop passes a block.
MediaBuffer* nextUnit(MatroskaExtIterator& iterator) {
    MediaBuffer* buffer = nullptr;
    while (iterator.read(&buffer, nullptr) != android::OK)
        if (iterator.AtEnd()) return nullptr;
    return buffer;
}

// Which track is furthest behind: a binary heap of (last time, track), the smallest on top.
class FurthestBehind {
  public:
    explicit FurthestBehind(size_t tracks) {
        for (size_t i = 0; i < tracks; ++i) mHeap.emplace_back(std::numeric_limits<int64_t>::min(), i);
    }
    bool empty() const { return mHeap.empty(); }
    size_t track() const { return mHeap.front().second; }
    void moveTo(int64_t timeUs) {
        mHeap.front().first = timeUs;
        siftDown();
    }
    void remove() {
        mHeap.front() = mHeap.back();
        mHeap.pop_back();
        siftDown();
    }

  private:
    void siftDown() {
        for (size_t at = 0, child = 1; child < mHeap.size(); at = child, child = 2 * at + 1) {
            if (child + 1 < mHeap.size() && mHeap[child + 1] < mHeap[child]) ++child;
            if (mHeap[at] < mHeap[child]) return;
            std::swap(mHeap[at], mHeap[child]);
        }
    }

    std::vector<std::pair<int64_t, size_t>> mHeap;
};

void demuxAll(CMatroskaFile* file, Sink& sink, const std::vector<const TrackEntry*>& entries) {
    std::deque<MatroskaExtIterator> iterators;  // neither copied nor moved
    for (const TrackEntry* entry : entries) {
        iterators.emplace_back(file, 0, 0, uint32_t(entry->TrackNumber.Get()), nullptr);
        iterators.back().reset();
    }
    FurthestBehind order(entries.size());
    while (!order.empty()) {
        const size_t track = order.track();
        if (MediaBuffer* buffer = nextUnit(iterators[track]))
            order.moveTo(sink.take(track, buffer));
        else
            order.remove();
    }
}

size_t firstVideo(const std::vector<const TrackEntry*>& entries) {
    for (size_t i = 0; i < entries.size(); ++i)
        if (entries[i]->TrackType.Get() == kVideoType) return i;
    return 0;
}

}  // namespace

double benchOpen(const sp<android::DataSource>& source) {
    const double start = nowMs();
    sp<MatroskaExtExtractor> extractor = new MatroskaExtExtractor(source);
    const bool good = extractor->File()->GetTrackCnt() > 0;
    extractor.clear();
    return good ? nowMs() - start : -1;
}

double benchDemux(const sp<android::DataSource>& source, SinkOptions options, Tallies& tallies) {
    tallies.clear();
    Sink sink(options, tallies);
    const double start = nowMs();
    sp<MatroskaExtExtractor> extractor = new MatroskaExtExtractor(source);
    const auto entries = entriesOf(*extractor->File());
    tallies.resize(entries.size());
    demuxAll(extractor->File(), sink, entries);
    extractor.clear();
    return entries.empty() ? -1 : nowMs() - start;
}

double benchSeek(const sp<android::DataSource>& source, size_t count, SinkOptions options, Tallies& tallies) {
    tallies.clear();
    Sink sink(options, tallies);
    const sp<MatroskaExtExtractor> extractor = new MatroskaExtExtractor(source);
    CMatroskaFile* file = extractor->File();
    const auto entries = entriesOf(*file);
    if (entries.empty()) return -1;
    tallies.resize(entries.size());
    const size_t track = firstVideo(entries);
    MatroskaExtIterator iterator(file, 0, 0, uint32_t(entries[track]->TrackNumber.Get()), nullptr);
    iterator.reset();
    const std::vector<int64_t> targets = seekTargets(count, int64_t(file->Segment.GetDuration() / 1000));
    const double start = nowMs();
    for (const int64_t target : targets) {
        android::MediaSource::ReadOptions to;
        to.setSeekTo(target);
        MediaBuffer* buffer = nullptr;
        if (iterator.read(&buffer, &to) != android::OK) return -1;
        sink.take(track, buffer);
    }
    return nowMs() - start;
}

}  // namespace mkvx
