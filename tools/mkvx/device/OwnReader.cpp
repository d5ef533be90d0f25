#include "device/OwnReader.h"

#include <media/stagefright/MediaBuffer.h>

#include "base/Log.h"
#include "device/DropReasons.h"
#include "device/ElementIds.h"
#include "matroska/MatroskaExtExtractor.h"
#include "matroska/MatroskaExtIterator.h"
#include "matroska/reader/MatroskaReader.h"

namespace mkvx {
namespace {

using android::MatroskaExtExtractor;
using android::sp;
using MatroskaExtReader::CMatroskaFile;
using MatroskaExtReader::CMatroskaNode;
using MatroskaExtReader::Cue;
using MatroskaExtReader::CuePoint;
using MatroskaExtReader::CueTrackPosition;

constexpr size_t kMostCuesTried = 65536;

TrackKind kindOf(uint32_t trackType) {
    switch (trackType) {
        case kVideoType:
            return TrackKind::kVideo;
        case kAudioType:
            return TrackKind::kAudio;
        default:
            return TrackKind::kSubtitle;  // the only other kind that is offered
    }
}

class IteratorTwin : public TwinCursor {
  public:
    // Without `onEvent` it leaves the file's subtitle queue alone.
    IteratorTwin(const sp<MatroskaExtExtractor>& extractor, uint32_t trackNumber, OnEvent onEvent)
        : mExtractor(extractor),
          mIterator(extractor->File(), 0, 0, trackNumber, onEvent ? extractor.get() : nullptr),
          mOnEvent(std::move(onEvent)) {
        MuteLog mute;
        mIterator.reset();
    }

    void step() override {
        MuteLog mute;
        android::MediaBuffer* buffer = nullptr;
        mSize = 0;
        if (mIterator.read(&buffer, nullptr) == android::OK && buffer != nullptr) {
            mSize = buffer->range_length();
            buffer->release();
        }
        if (mOnEvent) takeEvents();
    }

    bool atEnd() const override { return mIterator.AtEnd(); }
    uint64_t position() const override { return mIterator.LastPosition(); }
    size_t size() const override { return mSize; }

  private:
    // As a player does that asks after each unit.
    void takeEvents() {
        MatroskaExtReader::SubtitleQueue& queue = mExtractor->File()->Subtitles;
        while (!queue.IsEmpty()) {
            mOnEvent(queue.Last().mTrackNumber, queue.Last().mBuffer->range_length());
            queue.DropLast();
        }
    }

    const sp<MatroskaExtExtractor> mExtractor;
    android::MatroskaExtIterator mIterator;
    const OnEvent mOnEvent;
    size_t mSize = 0;
};

bool names(const Cue& cue, const CuePoint& point, uint64_t track) {
    for (uint32_t i = 0; i < point.PositionCount; ++i)
        if (cue.PositionsOf(point)[i].CueTrack == track) return true;
    return false;
}

void countPoints(const CMatroskaFile& file, IndexReport& report) {
    for (const auto& cue : file.Segment.Cues) {
        report.source = cue->IsSynthesised ? "scan" : "cues";
        report.points += cue->Points.size();
        for (const CuePoint& point : cue->Points)
            report.masterPoints += names(*cue, point, file.MasterTrack()) ? 1 : 0;
    }
}

bool isClusterAt(CMatroskaFile& file, const sp<CMatroskaNode>& root, uint64_t position) {
    file.SeekTo(position);
    const sp<CMatroskaNode> node = new CMatroskaNode(root.get());
    return node->IsValid() && node->Id() == id::kCluster;
}

}  // namespace

struct OwnReader::State {
    explicit State(const sp<android::DataSource>& source)
        : extractor(new MatroskaExtExtractor(source)),
          head(*extractor->File()),
          isStreamed((source->flags() & android::DataSource::kIsCachingDataSource) != 0) {}

    CMatroskaFile& file() const { return *extractor->File(); }

    sp<MatroskaExtExtractor> extractor;
    const FileHead head;
    const bool isStreamed;
};

OwnReader::OwnReader(const sp<android::DataSource>& source) {
    MuteLog mute;
    mState = std::make_unique<State>(source);
}

OwnReader::~OwnReader() {
    MuteLog mute;
    mState->extractor.clear();
}

const FileHead& OwnReader::head() const {
    return mState->head;
}

std::vector<OfferedTrack> OwnReader::offered() const {
    std::vector<OfferedTrack> out;
    const auto& tracks = mState->extractor->Tracks();
    for (size_t i = 0; i < tracks.size(); ++i) out.push_back({tracks[i].mTrackNum, kindOf(tracks[i].mType)});
    return out;
}

// Both lists are in the order of the file's entries.
std::vector<std::optional<DropReason>> OwnReader::drops() const {
    const auto& dropped = mState->extractor->DroppedTracks();
    std::vector<std::optional<DropReason>> drops;
    size_t next = 0;
    for (const auto& tracks : mState->file().Segment.Tracks)
        for (const auto& entry : tracks->Entries) {
            const bool isDropped = next < dropped.size() && dropped[next].mPosition == entry->Position;
            drops.push_back(isDropped ? dropReason(dropped[next++].mReason) : std::nullopt);
        }
    return drops;
}

IndexReport OwnReader::index() const {
    const CMatroskaFile& file = mState->file();
    IndexReport report;
    report.source = "none";
    report.isStreamed = mState->isStreamed;
    report.durationUs = mState->head.durationUs();
    report.masterTrack = file.MasterTrack();
    countPoints(file, report);
    for (size_t i = 0; i < file.Index().size(); ++i)
        report.entries.push_back({file.Index()[i].Time, file.Index()[i].Position});
    return report;
}

void OwnReader::forEachCue(const std::function<void(const CuePlace&)>& take) const {
    const CMatroskaFile& file = mState->file();
    for (const auto& cue : file.Segment.Cues) {
        if (cue->IsSynthesised) continue;
        for (const CuePoint& point : cue->Points)
            for (uint32_t i = 0; i < point.PositionCount; ++i) {
                const CueTrackPosition& place = cue->PositionsOf(point)[i];
                take({place.CueTrack, int64_t(file.ToMicroseconds(point.CueTime)),
                      MatroskaExtReader::AddWrapping(file.Segment.DataStart, place.CueClusterPosition)});
            }
    }
}

OwnReader::AstrayCues OwnReader::masterCuesAstray() const {
    MuteLog mute;
    CMatroskaFile& file = mState->file();
    const sp<CMatroskaNode> root = new CMatroskaNode(&file);
    AstrayCues astray;
    size_t tried = 0;
    for (const auto& cue : file.Segment.Cues)
        for (const CueTrackPosition& place : cue->Positions) {
            if (place.CueTrack != file.MasterTrack()) continue;
            if (tried++ >= kMostCuesTried) return astray;
            const uint64_t at = file.Segment.DataStart + place.CueClusterPosition;
            if (isClusterAt(file, root, at)) continue;
            if (astray.count++ == 0) astray.first = at;
        }
    return astray;
}

std::unique_ptr<TwinCursor> OwnReader::cursor(uint32_t trackNumber, OnEvent onEvent) const {
    return std::make_unique<IteratorTwin>(mState->extractor, trackNumber, std::move(onEvent));
}

}  // namespace mkvx
