#include "check/File.h"

#include <fmt/format.h>
#include <host/FormatDemands.h>
#include <media/stagefright/MetaData.h>
#include <algorithm>

#include "base/Text.h"
#include "check/Evidence.h"
#include "check/Findings.h"
#include "check/Remedy.h"
#include "device/Session.h"
#include "matroska/MatroskaExtExtractor.h"
#include "source/OpenSource.h"

namespace mkvx {
namespace {

namespace id = MatroskaExtReader::id;
using android::MatroskaExtExtractor;
using MatroskaExtReader::CMatroskaFile;

uint64_t sizeOf(const android::sp<android::DataSource>& source) {
    off64_t size = 0;
    return source->getSize(&size) == android::OK && size > 0 ? uint64_t(size) : 0;
}

// Both lists are in the order of the file's entries.
void matchOffers(MatroskaExtExtractor& extractor, const std::vector<JudgedTrack>& tracks,
                 const std::string& path) {
    const std::vector<android::DroppedTrack>& dropped = extractor.DroppedTracks();
    size_t next = 0, index = 0;
    for (const JudgedTrack& track : tracks) {
        if (next < dropped.size() && dropped[next].mPosition == track.entry->Position)
            track.verdict->dropped = explainDrop(*extractor.File(), path, track, dropped[next++].mReason);
        else
            track.verdict->index = index++;
    }
}

void judgeDemands(CMatroskaFile& file, const Session& session, const std::string& path,
                  const JudgedTrack& track) {
    const auto format = session.newSource(*track.verdict->index)->getFormat();
    const auto refusal = android::host::FindFormatRefusal(format);
    if (!refusal) return;
    Finding finding;
    finding.code = refusal->aborts ? "format_aborts" : "format_refused";
    finding.weight = refusal->aborts ? Weight::kFatal : Weight::kMute;
    finding.sentence =
        fmt::format("{} when a player sets up the decoder: {}",
                    refusal->aborts ? "the process ends" : "the framework refuses the track", refusal->what);
    finding.evidence = evidenceBelowOr(file, track.entry->Position, {id::kCodecPrivate});
    finding.remedy = copyCommand(path);
    track.verdict->findings.push_back(std::move(finding));
}

void describeOffers(const Session& session, CMatroskaFile& file, const std::vector<JudgedTrack>& tracks,
                    CheckedFile& checked) {
    for (const JudgedTrack& track : tracks) {
        TrackVerdict& verdict = *track.verdict;
        if (!verdict.isOffered()) continue;
        const TrackInfo& info = session.info().tracks[*verdict.index];
        verdict.mime = info.mime;
        for (const ConfigRecord& record : info.config) {
            const size_t kept = std::min(record.bytes.size(), ConfigSummary::kMostBytes);
            verdict.config.push_back({record.key,
                                      record.bytes.size(),
                                      {record.bytes.begin(), record.bytes.begin() + std::ptrdiff_t(kept)}});
        }
        judgeDemands(file, session, checked.path, track);
        judgeOffered(file, checked.path, track, info);
    }
}

void examineOpened(const Session& session, const CheckDepth& depth,
                   const std::function<void(const CheckedFile&)>& soFar, CheckedFile& checked) {
    const android::sp<MatroskaExtExtractor> extractor = session.reader().extractor();
    CMatroskaFile& file = *extractor->File();
    checked.containerMime = session.info().containerMime;
    const std::vector<JudgedTrack> tracks = listTracks(file, checked);
    matchOffers(*extractor, tracks, checked.path);
    describeOffers(session, file, tracks, checked);
    judgeDocument(file, checked);
    judgeSubtitles(file, tracks, checked);
    uint64_t clusters = 0;
    if (depth.units) {
        soFar(checked);
        const ByteAccount account = accountBytes(session.newBytes(), depth.onBytes);
        const EventTallies events = readAllUnits(session, checked.path, tracks, depth.onBytes);
        clusters = account.clusters;
        judgeStructure(file, account, checked);
        judgeDelivery(file, tracks, account, events, checked);
    }
    judgeLosses(file, checked);
    CMatroskaFile head(session.newBytes());
    (void)head.Init();  // it came through for the extractor
    judgeSeeking(*extractor, head, checked);
    checked.seeking->clusters = clusters;
}

// What discovery would have said of a track that it did not come to.
Finding explainUnreached(CMatroskaFile& file, const std::string& path, const JudgedTrack& track) {
    const android::DiscoveredTrack discovered = android::DiscoverTrack(&file, *track.entry);
    if (discovered.mDrop != android::DropReason::kNone)
        return explainDrop(file, path, track, discovered.mDrop);
    const char* mime = "";
    discovered.mMeta->findCString(android::kKeyMIMEType, &mime);
    return {"process_ends", Weight::kLoss, fmt::format("the process ends before it is offered as {}", mime),
            std::nullopt, ""};
}

// Without an extractor: what the parsed head alone tells.
void examineHead(const android::sp<android::DataSource>& source, CheckedFile& checked) {
    CMatroskaFile file(source);
    (void)file.Init();  // a failure is what is examined here
    const std::vector<JudgedTrack> tracks = listTracks(file, checked);
    for (const JudgedTrack& track : tracks)
        track.verdict->dropped = explainVorbisStop(file, checked.path, track);
    const CMatroskaFile::Opening opening(&file);
    for (const JudgedTrack& track : tracks)
        if (!track.verdict->dropped) track.verdict->dropped = explainUnreached(file, checked.path, track);
    judgeDocument(file, checked);
    judgeLosses(file, checked);
}

void tellNotClaimed(const android::sp<android::DataSource>& source, CheckedFile& checked) {
    CMatroskaFile file(source);
    Finding finding;
    finding.code = "not_claimed";
    finding.weight = Weight::kMute;
    finding.sentence = checked.size == 0 ? "it is empty" : "it does not begin with 1A 45 DF A3";
    if (checked.size > 0) finding.evidence = bytesAt(file, 0, 4);
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
        const android::sp<android::DataSource> bytes = openSource(path, source);
        checked.size = sizeOf(bytes);
        requireFirstByte(bytes, path);
        try {
            const Session session(plugin, path, source);
            examineOpened(session, depth, soFar, checked);
            decide(checked);
        } catch (const UnusableFile& failure) {
            examineRefused(failure, bytes, checked);
        }
        if (!source.troubles->empty()) giveUp(source.troubles->front());  // it broke while it was examined
    } catch (const std::exception& failure) {
        giveUp(failure.what());
    }
    return checked;
}

}  // namespace mkvx
