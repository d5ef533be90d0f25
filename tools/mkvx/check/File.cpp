#include "check/File.h"

#include <fmt/format.h>
#include <host/FormatDemands.h>
#include <media/stagefright/MetaData.h>
#include <algorithm>

#include "base/Text.h"
#include "check/Findings.h"
#include "check/Proposals.h"
#include "check/Remedy.h"
#include "check/SeekTrials.h"
#include "check/Stream.h"
#include "device/ElementIds.h"
#include "device/Session.h"
#include "source/OpenSource.h"

namespace mkvx {
namespace {

uint64_t sizeOf(const android::sp<android::DataSource>& source) {
    off64_t size = 0;
    return source->getSize(&size) == android::OK && size > 0 ? uint64_t(size) : 0;
}

// Both lists are in the order of the file's entries.
void matchOffers(const OwnReader& reader, const std::vector<JudgedTrack>& tracks, const std::string& path) {
    const std::vector<std::optional<DropReason>> drops = reader.drops();
    size_t index = 0;
    for (const JudgedTrack& track : tracks) {
        if (const auto reason = drops.at(track.place)) {
            track.verdict->dropped = explainDrop(reader.head(), path, track, *reason);
            judgeDropped(reader.head(), track);
        } else {
            track.verdict->index = index++;
        }
    }
}

void judgeDemands(const Session& session, const std::string& path, const JudgedTrack& track) {
    const auto format = session.newSource(*track.verdict->index)->getFormat();
    const auto refusal = android::host::FindFormatRefusal(format);
    if (!refusal) return;
    Finding finding;
    finding.code = refusal->aborts ? "format_aborts" : "format_refused";
    finding.weight = refusal->aborts ? Weight::kFatal : Weight::kMute;
    finding.sentence =
        fmt::format("{} when a player sets up the decoder: {}",
                    refusal->aborts ? "the process ends" : "the framework refuses the track", refusal->what);
    finding.evidence = session.reader().head().evidenceBelowOr(track.entry.position, {id::kCodecPrivate});
    finding.remedy = copyCommand(path);
    track.verdict->findings.push_back(std::move(finding));
}

ConfigSummary summaryOf(const ConfigRecord& record) {
    const size_t kept = std::min(record.bytes.size(), ConfigSummary::kMostBytes);
    return {
        record.key, record.bytes.size(), {record.bytes.begin(), record.bytes.begin() + std::ptrdiff_t(kept)}};
}

void describeOffers(const Session& session, const std::vector<JudgedTrack>& tracks, CheckedFile& checked) {
    for (const JudgedTrack& track : tracks) {
        TrackVerdict& verdict = *track.verdict;
        if (!verdict.isOffered()) continue;
        const TrackInfo& info = session.info().tracks[*verdict.index];
        verdict.mime = info.mime;
        for (const ConfigRecord& record : info.config) verdict.config.push_back(summaryOf(record));
        judgeStreamConfig(session.reader().head(), info, track);
        judgeDemands(session, checked.path, track);
        judgeOffered(session.reader().head(), checked.path, track, info);
    }
}

struct Examined {
    uint64_t clusters = 0;  // that were met
    std::optional<int64_t> lastUs;
};

Examined examineUnits(const Session& session, const CheckDepth& depth, const std::vector<JudgedTrack>& tracks,
                      CheckedFile& checked) {
    const FileHead& head = session.reader().head();
    for (const JudgedTrack& track : tracks) track.verdict->counts.emplace();
    const ByteAccount account = accountBytes(session.newBytes(), depth.onBytes);
    UnitPass pass = readAllUnits(session, checked.path, tracks, depth.onBytes);
    judgeStructure(head, account, checked);
    judgeDelivery(head, tracks, account, pass.events, checked);
    judgeExtras(head, account.extras, checked);
    for (StreamProbe& probe : pass.probes) probe.finish();
    trySeeks(session, checked);
    return {account.clusters, pass.lastUs};
}

void measureOffers(const Session& session, const CheckDepth& depth, const std::vector<JudgedTrack>& tracks,
                   const CheckedFile& checked) {
    const DecoderMeasure era;
    for (const JudgedTrack& track : tracks)
        if (track.verdict->isOffered())
            judgeDecoders(depth.decoders ? *depth.decoders : era, session.reader().head(), checked.path,
                          session.info().tracks[*track.verdict->index], track);
}

void examineOpened(const Session& session, const CheckDepth& depth,
                   const std::function<void(const CheckedFile&)>& soFar, CheckedFile& checked) {
    const FileHead& head = session.reader().head();
    checked.containerMime = session.info().containerMime;
    const std::vector<JudgedTrack> tracks = listTracks(head, checked);
    matchOffers(session.reader(), tracks, checked.path);
    describeOffers(session, tracks, checked);
    judgeDocument(head, session.newBytes(), checked);
    judgeSubtitles(session, tracks, checked);
    settleProposals(tracks, checked);
    if (depth.units) soFar(checked);
    const Examined units = depth.units ? examineUnits(session, depth, tracks, checked) : Examined();
    judgeLosses(head, checked);
    judgeSeeking(session, units.lastUs, checked);
    checked.seeking->clusters = units.clusters;
    measureOffers(session, depth, tracks, checked);
    settleProposals(tracks, checked);
}

// What discovery would have said of the tracks that it did not come to.
void explainUnreached(const FileHead& head, const std::string& path, const std::vector<JudgedTrack>& tracks) {
    std::vector<size_t> places;
    for (const JudgedTrack& track : tracks)
        if (!track.verdict->dropped) places.push_back(track.place);
    const std::vector<Discovery> discoveries = head.discover(places);
    for (size_t i = 0; i < places.size(); ++i) {
        const JudgedTrack& track = tracks[places[i]];
        const std::string sentence =
            fmt::format("the process ends before it is offered as {}", discoveries[i].mime);
        track.verdict->dropped = discoveries[i].dropped
                                     ? explainDrop(head, path, track, *discoveries[i].dropped)
                                     : Finding{"process_ends", Weight::kLoss, sentence, std::nullopt, ""};
    }
}

// Without an extractor: what the parsed head alone tells.
void examineHead(const android::sp<android::DataSource>& source, CheckedFile& checked) {
    const FileHead head(source);
    const std::vector<JudgedTrack> tracks = listTracks(head, checked);
    for (const JudgedTrack& track : tracks)
        track.verdict->dropped = explainVorbisStop(head, checked.path, track);
    explainUnreached(head, checked.path, tracks);
    judgeDocument(head, source, checked);
    judgeLosses(head, checked);
    settleProposals(tracks, checked);
}

// A file that is no document has no head to ask.
Evidence firstFourBytes(const android::sp<android::DataSource>& source, uint64_t fileSize) {
    Evidence evidence;
    evidence.size = 4;
    evidence.bytes.resize(size_t(std::min(evidence.size, fileSize)));
    const ssize_t got = source->readAt(0, evidence.bytes.data(), evidence.bytes.size());
    if (got != ssize_t(evidence.bytes.size())) evidence.bytes.clear();
    return evidence;
}

void tellNotClaimed(const android::sp<android::DataSource>& source, CheckedFile& checked) {
    Finding finding;
    finding.code = "not_claimed";
    finding.weight = Weight::kMute;
    finding.sentence = checked.size == 0 ? "it is empty" : "it does not begin with 1A 45 DF A3";
    if (checked.size > 0) finding.evidence = firstFourBytes(source, checked.size);
    checked.verdict = Verdict::kNoMatroska;
    checked.reason = finding.sentence;
    checked.findings.push_back(std::move(finding));
}

void examineRefused(const UnusableFile& failure, const android::sp<android::DataSource>& source,
                    CheckedFile& checked) {
    switch (failure.why()) {
        case UnusableFile::Why::kNotClaimed:
            return tellNotClaimed(source, checked);
        case UnusableFile::Why::kStopsProcess:
            checked.findings.push_back({"stops_at_opening", Weight::kFatal,
                                        "opening it ends the process: " + printable(failure.stoppedBy()),
                                        std::nullopt, ""});
            break;
        case UnusableFile::Why::kNoExtractor:
        case UnusableFile::Why::kNoTracks:
            break;
    }
    examineHead(source, checked);
    decide(checked);
}

// A device has four of a file's bytes or none: a medium that fails is told apart from another format.
void requireFirstByte(const android::sp<android::DataSource>& source, const std::string& path) {
    uint8_t byte;
    if (source->readAt(0, &byte, 1) < 0) throw FileFailure(path, "its first byte cannot be read");
}

}  // namespace

CheckedFile examine(const ExtractorPlugin& plugin, const std::string& path, const SourceOptions& source,
                    const CheckDepth& depth, const std::function<void(const CheckedFile&)>& soFar) {
    CheckedFile checked;
    checked.path = path;
    const auto giveUp = [&](const std::string& text) {
        const std::string prefix = path + ": ";
        checked.verdict = Verdict::kUnreadable;
        checked.reason = text.compare(0, prefix.size(), prefix) == 0 ? text.substr(prefix.size()) : text;
    };
    try {
        const android::sp<android::DataSource> bytes = openCached(path, source);
        const android::sp<android::DataSource> own = withFaults(bytes, source.faults);
        checked.size = sizeOf(own);
        requireFirstByte(own, path);
        try {
            const Session session(plugin, path, source.faults, bytes);
            examineOpened(session, depth, soFar, checked);
            decide(checked);
        } catch (const UnusableFile& failure) {
            examineRefused(failure, own, checked);
        }
        if (!source.troubles->empty()) giveUp(source.troubles->front());  // it broke while it was examined
    } catch (const std::exception& failure) {
        giveUp(failure.what());
    }
    return checked;
}

}  // namespace mkvx
