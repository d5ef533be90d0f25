#include "cost/Measure.h"

#include <media/stagefright/MetaData.h>
#include <algorithm>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "cost/Elements.h"
#include "device/Opening.h"
#include "device/TrackReader.h"
#include "device/UnitProgress.h"
#include "seek/Targets.h"
#include "source/BenchSource.h"
#include "source/HttpSource.h"
#include "source/OpenSource.h"

namespace mkvx {
namespace {

using android::MediaExtractor;
using android::sp;

// A sequence of reads, to be compared with another one.
class Trace {
  public:
    void add(off64_t offset, size_t asked) {
        ++mReads;
        for (const uint64_t value : {uint64_t(offset), uint64_t(asked)})
            mHash = (mHash ^ value) * 0x100000001B3u;
    }
    uint64_t reads() const { return mReads; }
    bool operator==(const Trace& other) const { return mReads == other.mReads && mHash == other.mHash; }

  private:
    uint64_t mReads = 0, mHash = 0xCBF29CE484222325u;
};

// The reads of opening up to where the tracks are looked at, made by this program's own reader.
struct OpeningReads {
    Trace trace;
    uint64_t headReads = 0;  // those before the scan for an index
};

OpeningReads traceOpening(const sp<android::DataSource>& bytes, bool isCached, CostElements& elements) {
    OpeningReads reads;
    bool isSearched = false;
    const sp<CountingSource> source = new CountingSource(bytes);
    source->setFlags(isCached ? kNetworkFlags : 0);
    source->observe([&](off64_t offset, size_t asked, ssize_t) {
        reads.trace.add(offset, asked);
        isSearched = isSearched || (reads.headReads == 0 && !elements.isKnown(uint64_t(offset)));
    });
    Opening opening(source);
    reads.headReads = reads.trace.reads();
    if (isSearched) elements.lookBehindClusters();
    if (!isCached) opening.scanForIndex();
    return reads;
}

// Plays all tracks of a file side by side, from its beginning to its end.
class Playing {
  public:
    Playing(MediaExtractor& extractor, const FileInfo& info, ProgressStyle style)
        : mProgress(info.path, style, 1) {
        int64_t longest = 0;
        for (const TrackInfo& track : info.tracks) {
            longest = std::max(longest, track.durationUs.value_or(0));
            auto reader = std::make_unique<TrackReader>(extractor.getTrack(track.index));
            if (track.kind == TrackKind::kSubtitle)
                mSubtitles.push_back(std::move(reader));
            else
                mPlayed.push_back({std::move(reader), 0});
        }
        mProgress.beginPass(longest);
    }

    // The next unit comes from the track that is furthest behind; subtitles are fetched as they arrive.
    void run() {
        while (!mPlayed.empty()) {  // bounded: every step takes a unit or ends a track
            step();
            for (const auto& reader : mSubtitles)
                while (reader->next()) {
                }
        }
    }

  private:
    struct Played {
        std::unique_ptr<TrackReader> reader;
        int64_t timeUs = 0;
    };

    void step() {
        const auto next = std::min_element(mPlayed.begin(), mPlayed.end(),
                                           [](const auto& a, const auto& b) { return a.timeUs < b.timeUs; });
        const BufferPtr buffer = next->reader->next();
        if (!buffer) {
            mPlayed.erase(next);
            return;
        }
        buffer->meta_data()->findInt64(android::kKeyTime, &next->timeUs);
        mProgress.reach(next->timeUs, buffer->range_length());
    }

    UnitProgress mProgress;
    std::vector<Played> mPlayed;
    std::vector<std::unique_ptr<TrackReader>> mSubtitles;
};

// A player's way through the file, with the ledger as its companion.
class Watched {
  public:
    Watched(const Session& session, const CostOptions& options, bool isCached, uint64_t size,
            CostElements& elements)
        : mSession(session),
          mOptions(options),
          mIsCached(isCached),
          mElements(elements),
          mOpening(traceOpening(session.newBytes(), isCached, elements)),
          mLedger(newCache(), size) {}

    CostLedgerResult run(const TrackInfo* sought) {
        const sp<CountingSource> bytes = newBytes(mSession.unsniffedBytes());
        sniff(bytes);
        const sp<MediaExtractor> extractor = open(bytes);
        bytes->observe(into(CostStage::kFirstUnits));
        for (const TrackInfo& track : mSession.info().tracks)
            TrackReader(extractor->getTrack(track.index)).next();
        bytes->observe(into(CostStage::kSeeks));
        if (sought != nullptr && mOptions.seeks > 0) seek(extractor, *sought);
        throwIfInterrupted(mSession.info().path);
        if (mOptions.demux) untilInterrupted([this] { demux(); });
        CostLedgerResult result{mIsCached, mLedger.costs()};
        if (wasInterrupted()) result.stages[size_t(CostStage::kDemux)] = {};  // a part of it would mislead
        return result;
    }

  private:
    std::unique_ptr<BlockCache> newCache() const {
        if (!mIsCached) return nullptr;
        return std::make_unique<BlockCache>(mOptions.blockSize, mOptions.cacheSize,
                                            BlockCache::Keeps::kNumbersOnly);
    }

    sp<CountingSource> newBytes(const sp<android::DataSource>& bytes) const {
        const sp<CountingSource> counting = new CountingSource(bytes);
        counting->setFlags(mIsCached ? kNetworkFlags : 0);
        return counting;
    }

    CountingSource::Observer into(CostStage stage) {
        return [this, stage](off64_t offset, size_t asked, ssize_t got) {
            mLedger.add(stage, uint64_t(offset), asked, got);
        };
    }

    void sniff(const sp<CountingSource>& bytes) {
        bytes->observe(into(CostStage::kSniffing));
        android::String8 mime;
        float confidence = 0;
        sp<android::AMessage> meta;
        (void)mSession.plugin().Sniffer(bytes, &mime, &confidence, &meta);  // the session's was told apart
    }

    // The reads come in the order of the traced ones, which tells the stages apart.
    sp<MediaExtractor> open(const sp<CountingSource>& bytes) {
        Trace trace;
        bool isSame = mOpening.trace.reads() == 0;
        bytes->observe([&](off64_t offset, size_t asked, ssize_t got) {
            if (trace.reads() < mOpening.trace.reads())
                trace.add(offset, asked);
            else
                return mLedger.add(CostStage::kConfiguration, uint64_t(offset), asked, got);
            isSame = trace == mOpening.trace;
            const bool isHead = trace.reads() <= mOpening.headReads;
            mLedger.add(isHead ? mElements.stageOf(uint64_t(offset)) : CostStage::kScan, uint64_t(offset),
                        asked, got);
        });
        const sp<MediaExtractor> extractor = mSession.plugin().open(bytes, nullptr);
        throwIfInterrupted(mSession.info().path);
        if (!isSame || extractor == nullptr || extractor->countTracks() != mSession.info().tracks.size())
            throw FileFailure(mSession.info().path,
                              "the loaded plug-in reads it in another way than this program's own reader");
        for (size_t i = 0; i < extractor->countTracks(); ++i)
            extractor->getTrackMetaData(i, MediaExtractor::kIncludeExtensiveMetaData);
        return extractor;
    }

    void seek(const sp<MediaExtractor>& extractor, const TrackInfo& track) {
        const sp<android::MediaSource> source = extractor->getTrack(track.index);
        if (source == nullptr || source->start() != android::OK) return;
        for (const int64_t target : seekTargets(mOptions.seeks, durationOf(*extractor, track))) {
            android::MediaSource::ReadOptions to;
            to.setSeekTo(target);
            android::MediaBuffer* buffer = nullptr;
            if (source->read(&buffer, &to) == android::OK && buffer != nullptr) buffer->release();
        }
        source->stop();
    }

    // As this extractor sees it: without an index it may know none.
    static int64_t durationOf(MediaExtractor& extractor, const TrackInfo& track) {
        int64_t durationUs = 0;
        const sp<android::MetaData> meta = extractor.getTrackMetaData(track.index, 0);
        if (meta != nullptr) meta->findInt64(android::kKeyDuration, &durationUs);
        return std::max<int64_t>(durationUs, 0);
    }

    void demux() {
        const sp<CountingSource> bytes = newBytes(mSession.newBytes());
        const sp<MediaExtractor> extractor = mSession.plugin().open(bytes, nullptr);
        bytes->observe(into(CostStage::kDemux));
        Playing(*extractor, mSession.info(), mOptions.progress).run();
    }

    const Session& mSession;
    const CostOptions mOptions;
    const bool mIsCached;
    CostElements& mElements;
    const OpeningReads mOpening;
    CostLedger mLedger;
};

const TrackInfo* trackToSeek(const std::vector<TrackInfo>& tracks) {
    for (const TrackKind kind : {TrackKind::kVideo, TrackKind::kAudio})
        for (const TrackInfo& track : tracks)
            if (track.kind == kind) return &track;
    return nullptr;
}

}  // namespace

CostReport measureCost(const Session& session, const CostOptions& options) {
    CostReport report;
    report.path = session.info().path;
    report.options = options;
    off64_t size = 0;
    const bool knowsSize = session.newBytes()->getSize(&size) == android::OK && size >= 0;
    if (knowsSize) report.size = uint64_t(size);
    const uint64_t end = report.size.value_or(uint64_t(INT64_MAX));
    const TrackInfo* sought = trackToSeek(session.info().tracks);
    if (sought != nullptr) report.seekTrack = sought->index;
    CostElements elements(session.newBytes());
    for (const bool isCached : {false, true}) {
        if (!isCached && isUrl(report.path)) continue;
        untilInterrupted([&] {
            report.ledgers.push_back(Watched(session, options, isCached, end, elements).run(sought));
        });
        if (wasInterrupted()) break;
    }
    if (report.ledgers.empty()) throwIfInterrupted(report.path);
    return report;
}

}  // namespace mkvx
