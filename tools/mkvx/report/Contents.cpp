#include <set>
#include <tuple>

#include "report/Collect.h"
#include "seek/Index.h"

namespace mkvx {
namespace {

constexpr int64_t kCoarseUs = 10000000;

TrackTimeline* timelineOf(ReportPage& page, uint64_t trackNumber) {
    for (TrackTimeline& line : page.timelines)
        if (page.info.tracks[line.index].number == trackNumber) return &line;
    return nullptr;
}

void readCues(const OwnReader& reader, ReportPage& page) {
    reader.forEachCue([&](const CuePlace& cue) {
        if (TrackTimeline* line = timelineOf(page, cue.track)) line->cues.add({cue.timeUs, cue.position});
    });
}

void readDocument(const android::sp<android::DataSource>& source, ReportPage& page) {
    Document document(source);
    page.chapters = document.chapters();
    if (!page.chapters.isReached) page.chapters.editions.clear();
    page.attachments = document.attachments();
    if (!page.attachments.isReached) page.attachments.files.clear();
}

}  // namespace

void readContents(const Session& session, ReportPage& page) {
    const OwnReader& reader = session.reader();
    const DocumentFacts document = reader.head().document();
    page.docType = document.docType;
    page.title = document.title;
    page.muxingApp = document.muxingApp;
    page.writingApp = document.writingApp;
    page.index = reader.index();
    page.durationUs = page.index.durationUs;
    page.coarse = gapsOf(page.index, kCoarseUs);
    for (const IndexEntry& entry : page.index.entries)
        page.indexEntries.add({entry.timeUs, entry.position + document.segmentData});
    page.index.entries.clear();
    readCues(reader, page);
    readDocument(session.newBytes(), page);
}

// Every walk over the same damage notes it anew: each is told once. What was skipped between elements the
// layout knows.
void readLosses(const OwnReader& reader, ReportPage& page) {
    const std::vector<Loss>& losses = reader.head().losses();
    std::set<std::tuple<uint64_t, LossKind, uint64_t>> told;
    for (const Loss& loss : losses)
        if (loss.kind != LossKind::kResynchronised) told.insert({loss.position, loss.kind, loss.size});
    for (const auto& [position, kind, size] : told)
        page.losses.push_back({textOf(kind).sentence, position, size});
    page.isLossListFull = losses.size() == kLossesKept;
}

}  // namespace mkvx
