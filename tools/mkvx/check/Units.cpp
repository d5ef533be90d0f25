#include "check/Units.h"

#include <fmt/format.h>
#include <media/stagefright/MediaBuffer.h>
#include <media/stagefright/MetaData.h>
#include <algorithm>

#include "check/Remedy.h"
#include "device/ElementIds.h"
#include "device/TrackReader.h"
#include "utils/MimeTypes.h"

namespace mkvx {
namespace {

// One track being read.
struct Reading {
    TrackVerdict* verdict;
    TrackCounts* counts;  // the verdict's
    size_t ordinal;       // among the tracks of its kind
    std::unique_ptr<TrackReader> reader;
    StreamProbe* probe;
    bool hasNalLengths;
    int64_t timeUs = INT64_MIN;
    std::optional<int64_t> lastUs;  // the latest until now
    uint64_t cut = 0;               // units that lost their end to wrong NAL lengths
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
    reading.lastUs = std::max(reading.lastUs.value_or(timeUs), timeUs);
    ++reading.counts->units;
    reading.counts->unitBytes += unit->range_length();
    reading.probe->take(static_cast<const uint8_t*>(unit->data()) + unit->range_offset(),
                        unit->range_length(), timeUs);
    if (reading.hasNalLengths && unit->range_length() < reading.reader->storedSize()) ++reading.cut;
}

Reading* furthestBehind(std::vector<Reading>& readings) {
    Reading* chosen = nullptr;
    for (Reading& reading : readings)
        if (!reading.isDone && (chosen == nullptr || reading.timeUs < chosen->timeUs)) chosen = &reading;
    return chosen;
}

bool hasNalLengths(const std::string& mime) {
    return mime == android::MEDIA_MIMETYPE_VIDEO_AVC || mime == android::MEDIA_MIMETYPE_VIDEO_HEVC;
}

Reading startReading(const Session& session, const JudgedTrack& judged, EventTallies& events,
                     StreamProbe& probe) {
    const auto count = [&events](uint64_t trackNumber, size_t size) {
        EventTally& tally = events[trackNumber];
        ++tally.records;
        tally.bytes += size;
    };
    TrackVerdict& verdict = *judged.verdict;
    const TrackInfo& track = session.info().tracks[*verdict.index];
    const bool isMaster = session.masterTrack() == &track;
    auto twin = session.reader().cursor(track.number, isMaster ? OnEvent(count) : nullptr);
    Reading reading;
    reading.verdict = &verdict;
    reading.counts = &*verdict.counts;
    reading.ordinal = judged.ordinal;
    reading.reader = std::make_unique<TrackReader>(session.newSource(track.index), std::move(twin));
    reading.probe = &probe;
    reading.hasNalLengths = hasNalLengths(verdict.mime);
    return reading;
}

std::vector<Reading> startReadings(const Session& session, const std::vector<JudgedTrack>& tracks,
                                   EventTallies& events, std::deque<StreamProbe>& probes) {
    std::vector<Reading> readings;
    for (const JudgedTrack& track : tracks) {
        if (!track.verdict->isOffered() || track.verdict->kind == "subtitle") continue;
        probes.emplace_back(session.info().tracks[*track.verdict->index], *track.verdict);
        readings.push_back(startReading(session, track, events, probes.back()));
    }
    return readings;
}

void tellCut(const FileHead& head, const std::string& path, const Reading& reading) {
    reading.verdict->findings.push_back(
        {"units_cut", Weight::kLoss,
         fmt::format("{} of its units end at a NAL length that does not fit; the rest of them is missing",
                     reading.cut),
         head.evidenceBelow(reading.verdict->position, {id::kCodecPrivate}),
         recodeCommand(path, 'v', reading.ordinal, "libx264")});
}

}  // namespace

UnitPass readAllUnits(const Session& session, const std::string& path, const std::vector<JudgedTrack>& tracks,
                      const std::function<void(uint64_t)>& onBytes) {
    UnitPass pass;
    std::vector<Reading> readings = startReadings(session, tracks, pass.events, pass.probes);
    while (Reading* reading = furthestBehind(readings)) {  // each step moves one track on
        const uint64_t before = reading->counts->unitBytes;
        readOne(*reading);
        pass.lastUs = std::max(pass.lastUs, reading->lastUs);
        if (onBytes) onBytes(reading->counts->unitBytes - before);
    }
    for (const Reading& reading : readings) {
        reading.counts->unreadable = reading.reader->unreadable();
        if (reading.cut > 0) tellCut(session.reader().head(), path, reading);
    }
    return pass;
}

}  // namespace mkvx
