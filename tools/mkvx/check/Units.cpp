#include "check/Units.h"

#include <fmt/format.h>
#include <media/stagefright/MediaBuffer.h>
#include <media/stagefright/MetaData.h>
#include <algorithm>

#include "check/Evidence.h"
#include "check/Remedy.h"
#include "device/TrackReader.h"
#include "matroska/MatroskaExtExtractor.h"
#include "matroska/MatroskaExtIterator.h"
#include "utils/MimeTypes.h"

namespace mkvx {
namespace {

using android::MatroskaExtExtractor;
using android::sp;

// Steps through a track beside the plug-in's source, on this program's own extractor, and sees what the
// source does not tell: the end, the unit's size before its NAL lengths were rewritten, and, on the master
// track, the subtitle events that were queued on the way.
class WatchingTwin : public TwinCursor {
  public:
    WatchingTwin(const sp<MatroskaExtExtractor>& extractor, uint32_t number, EventTallies* events)
        : mExtractor(extractor),
          mIterator(extractor->File(), 0, 0, number, events != nullptr ? extractor.get() : nullptr),
          mEvents(events) {
        mIterator.reset();
    }

    void step() override {
        android::MediaBuffer* buffer = nullptr;
        mSize = 0;
        if (mIterator.read(&buffer, nullptr) == android::OK && buffer != nullptr) {
            mSize = buffer->range_length();
            buffer->release();
        }
        if (mEvents != nullptr) takeEvents();
    }
    bool atEnd() const override { return mIterator.AtEnd(); }
    size_t lastSize() const { return mSize; }

  private:
    // As a player does that asks after each unit.
    void takeEvents() {
        android::SubtitleQueue& queue = mExtractor->File()->Subtitles;
        while (!queue.IsEmpty()) {
            EventTally& tally = (*mEvents)[queue.Last().mTrackNumber];
            ++tally.records;
            tally.bytes += queue.Last().mBuffer->range_length();
            queue.DropLast();
        }
    }

    sp<MatroskaExtExtractor> mExtractor;
    android::MatroskaExtIterator mIterator;
    EventTallies* mEvents;
    size_t mSize = 0;
};

// One track being read.
struct Reading {
    TrackVerdict* verdict;
    WatchingTwin* twin;  // the reader's
    std::unique_ptr<TrackReader> reader;
    bool hasNalLengths;
    int64_t timeUs = INT64_MIN;
    uint64_t cut = 0;  // units that lost their end to wrong NAL lengths
    bool isDone = false;
};

void readOne(Reading& reading) {
    const BufferPtr unit = reading.reader->next();
    if (!unit) {
        reading.isDone = true;
        return;
    }
    int64_t timeUs = 0;
    unit->meta_data()->findInt64(android::kKeyTime, &timeUs);
    reading.timeUs = timeUs;
    ++reading.verdict->units;
    reading.verdict->unitBytes += unit->range_length();
    if (reading.hasNalLengths && unit->range_length() < reading.twin->lastSize()) ++reading.cut;
}

Reading* furthestBehind(std::vector<Reading>& readings) {
    Reading* chosen = nullptr;
    for (Reading& reading : readings)
        if (!reading.isDone && (chosen == nullptr || reading.timeUs < chosen->timeUs)) chosen = &reading;
    return chosen;
}

std::vector<Reading> startReadings(const Session& session, const sp<MatroskaExtExtractor>& own,
                                   const std::vector<JudgedTrack>& tracks, EventTallies& events) {
    std::vector<Reading> readings;
    bool hasMaster = false;  // the events are counted once, even where two tracks have the master's number
    for (const JudgedTrack& track : tracks) {
        TrackVerdict& verdict = *track.verdict;
        if (!verdict.isOffered() || verdict.kind == "subtitle") continue;
        const auto number = static_cast<uint32_t>(verdict.number);
        const bool isMaster = !hasMaster && number == own->File()->MasterTrack();
        hasMaster = hasMaster || isMaster;
        auto twin = std::make_unique<WatchingTwin>(own, number, isMaster ? &events : nullptr);
        Reading reading;
        reading.verdict = &verdict;
        reading.twin = twin.get();
        reading.reader = std::make_unique<TrackReader>(session.newSource(*verdict.index), std::move(twin));
        reading.hasNalLengths = verdict.mime == android::MEDIA_MIMETYPE_VIDEO_AVC ||
                                verdict.mime == android::MEDIA_MIMETYPE_VIDEO_HEVC;
        readings.push_back(std::move(reading));
    }
    return readings;
}

}  // namespace

EventTallies readAllUnits(const Session& session, const std::string& path,
                          const std::vector<JudgedTrack>& tracks,
                          const std::function<void(uint64_t)>& onBytes) {
    const sp<MatroskaExtExtractor> own = session.reader().extractor();
    EventTallies events;
    std::vector<Reading> readings = startReadings(session, own, tracks, events);
    while (Reading* reading = furthestBehind(readings)) {  // each step moves one track on
        const uint64_t before = reading->verdict->unitBytes;
        readOne(*reading);
        if (onBytes) onBytes(reading->verdict->unitBytes - before);
    }
    for (Reading& reading : readings) {
        reading.verdict->unreadable = reading.reader->unreadable();
        if (reading.cut > 0)
            reading.verdict->findings.push_back(
                {"units_cut", Weight::kLoss,
                 fmt::format(
                     "{} of its units end at a NAL length that does not fit; the rest of them is missing",
                     reading.cut),
                 evidenceBelow(*own->File(), reading.verdict->position,
                               {MatroskaExtReader::id::kCodecPrivate}),
                 copyCommand(path)});
    }
    return events;
}

}  // namespace mkvx
