#include <set>
#include <tuple>

#include "matroska/MatroskaExtExtractor.h"
#include "report/Collect.h"

namespace mkvx {
namespace {

using namespace MatroskaExtReader;

constexpr int64_t kCoarseUs = 10000000;

std::string textOf(const TextValue& value) {
    return value.c_str();  // up to its first zero byte
}

TrackTimeline* timelineOf(ReportPage& page, uint64_t trackNumber) {
    for (TrackTimeline& line : page.timelines)
        if (page.info.tracks[line.index].number == trackNumber) return &line;
    return nullptr;
}

void readCues(const CMatroskaFile& file, ReportPage& page) {
    for (const auto& cue : file.Segment.Cues) {
        if (cue->IsSynthesised) continue;
        for (const CuePoint& point : cue->Points)
            for (uint32_t i = 0; i < point.PositionCount; ++i) {
                const CueTrackPosition& place = cue->PositionsOf(point)[i];
                TrackTimeline* line = timelineOf(page, place.CueTrack);
                if (line != nullptr)
                    line->cues.add({int64_t(file.ToMicroseconds(point.CueTime)),
                                    AddWrapping(file.Segment.DataStart, place.CueClusterPosition)});
            }
    }
}

void readDocument(const android::sp<android::DataSource>& source, ReportPage& page) {
    Document document(source);
    page.chapters = document.chapters();
    if (!page.chapters.isReached) page.chapters.editions.clear();
    page.attachments = document.attachments();
    if (!page.attachments.isReached) page.attachments.files.clear();
}

const char* describe(LossKind kind) {
    switch (kind) {
        case LossKind::kResynchronised:
            return "bytes that are no element, skipped to the next one that can be read";
        case LossKind::kBeyondSource:
            return "an element or block that reaches past the end of the file";
        case LossKind::kTooLarge:
            return "a size beyond what can be handled";
        case LossKind::kLimit:
            return "more objects than are kept";
        case LossKind::kTooDeep:
            return "nested deeper than is followed";
        case LossKind::kBadLacing:
            return "a block whose laces do not fit it";
        case LossKind::kBadCompression:
            return "a frame that cannot be decompressed, left as stored";
        case LossKind::kRefusedAllocation:
            return "memory for it was refused";
    }
    return "";
}

}  // namespace

void readContents(const Session& session, ReportPage& page) {
    android::MatroskaExtExtractor& extractor = *session.reader().extractor();
    const CMatroskaFile& file = *extractor.File();
    page.docType = textOf(file.Header.DocType);
    page.title = textOf(file.Segment.Info.Title);
    page.muxingApp = textOf(file.Segment.Info.MuxingApp);
    page.writingApp = textOf(file.Segment.Info.WritingApp);
    page.index = readIndex(extractor);
    page.durationUs = page.index.durationUs;
    page.coarse = gapsOf(page.index, kCoarseUs);
    for (const IndexEntry& entry : page.index.entries)
        page.indexEntries.add({entry.timeUs, AddWrapping(entry.position, file.Segment.DataStart)});
    page.index.entries.clear();
    readCues(file, page);
    readDocument(session.newBytes(), page);
}

// Every walk over the same damage notes it anew: each is told once. What was skipped between elements the
// layout knows.
void readLosses(android::MatroskaExtExtractor& extractor, ReportPage& page) {
    std::set<std::tuple<uint64_t, LossKind, uint64_t>> told;
    for (const Loss& loss : extractor.File()->Losses.List())
        if (loss.kind != LossKind::kResynchronised) told.insert({loss.position, loss.kind, loss.size});
    for (const auto& [position, kind, size] : told) page.losses.push_back({describe(kind), position, size});
    page.isLossListFull = extractor.File()->Losses.List().size() == Losses::kKept;
}

}  // namespace mkvx
