// The file as a whole: its header, its damage, its index.
#include <fmt/format.h>
#include <algorithm>

#include "base/Text.h"
#include "check/Evidence.h"
#include "check/Findings.h"
#include "check/Remedy.h"
#include "seek/Index.h"

namespace mkvx {
namespace {

namespace id = MatroskaExtReader::id;
using MatroskaExtReader::CMatroskaFile;
using MatroskaExtReader::CMatroskaNode;
using MatroskaExtReader::Loss;
using MatroskaExtReader::LossKind;

constexpr size_t kMostCuesTried = 65536;

void add(CheckedFile& checked, const char* code, Weight weight, std::string sentence,
         std::optional<Evidence> evidence = {}, std::string remedy = {}) {
    checked.findings.push_back({code, weight, std::move(sentence), std::move(evidence), std::move(remedy)});
}

// Cue points of the master track that do not lead to a Cluster; `first` is the position that one names.
uint64_t countWrongCues(CMatroskaFile& file, uint64_t* first) {
    uint64_t wrong = 0;
    size_t tried = 0;
    const android::sp<CMatroskaNode> root = new CMatroskaNode(&file);
    for (const auto& cue : file.Segment.Cues) {
        for (const auto& position : cue->Positions) {
            if (position.CueTrack != file.MasterTrack()) continue;
            if (tried++ >= kMostCuesTried) return wrong;
            const uint64_t at = file.Segment.DataStart + position.CueClusterPosition;
            file.SeekTo(at);
            const android::sp<CMatroskaNode> node = new CMatroskaNode(root.get());
            if (node->IsValid() && node->Id() == id::kCluster) continue;
            if (wrong++ == 0) *first = at;
        }
    }
    return wrong;
}

void judgeDuration(const IndexReport& report, const CMatroskaFile& head, CheckedFile& checked) {
    const auto statedUs = int64_t(head.Segment.GetDuration() / 1000);
    const std::string& path = checked.path;
    if (report.durationUs == 0 && report.source == "scan" && statedUs > 0)
        add(checked, "no_duration", Weight::kLoss,
            fmt::format(
                "every seek ends the stream: without Cues the start of the last Cluster is taken for the "
                "duration, and that is 0 where the file says {}",
                clockTime(statedUs)),
            {}, remuxCommand(path));
    else if (report.durationUs == 0)
        add(checked, "no_duration", Weight::kLoss,
            "every seek ends the stream, for the file states no Duration", {}, remuxCommand(path));
    else if (report.source == "scan" && report.durationUs < statedUs)
        add(checked, "duration_cut", Weight::kLoss,
            fmt::format("the last {} cannot be sought to: without Cues the start of the last Cluster is "
                        "taken for the "
                        "duration",
                        clockTime(statedUs - report.durationUs)),
            {}, remuxCommand(path));
}

std::string describeLoss(LossKind kind, uint64_t count) {
    switch (kind) {
        case LossKind::kTooLarge:
            return counted(count, "element") + " too large for the interfaces, and left out";
        case LossKind::kLimit:
            return counted(count, "limit") +
                   " met of what the reader keeps or asks for; what is beyond is left out";
        case LossKind::kTooDeep:
            return counted(count, "element") + " nested deeper than the reader follows";
        case LossKind::kBadCompression:
            return counted(count, "frame") + " that cannot be decompressed, and arrive as stored";
        default:
            return "no memory for " + counted(count, "thing") + " that the file holds";
    }
}

const char* codeOf(LossKind kind) {
    switch (kind) {
        case LossKind::kTooLarge:
            return "elements_too_large";
        case LossKind::kLimit:
            return "reader_limit";
        case LossKind::kTooDeep:
            return "nested_too_deep";
        case LossKind::kBadCompression:
            return "bad_compression";
        default:
            return "no_memory";
    }
}

}  // namespace

void judgeDocument(CMatroskaFile& file, CheckedFile& checked) {
    using MatroskaExtReader::HeaderVerdict;
    const HeaderVerdict verdict = MatroskaExtReader::JudgeHeader(file.Header);
    if (verdict == HeaderVerdict::kOtherDocType)
        add(checked, "other_doctype", Weight::kMute,
            fmt::format("the document type is \"{}\", and only matroska and webm are read",
                        printable(file.Header.DocType.c_str())),
            evidenceBelowOr(file, 0, {id::kDocType}));
    else if (verdict == HeaderVerdict::kTooNew)
        add(checked, "doctype_too_new", Weight::kMute,
            fmt::format("it asks for a reader of version {}, and this one reads up to 2",
                        file.Header.DocTypeReadVersion.Get()),
            evidenceBelowOr(file, 0, {id::kDocTypeReadVersion}), remuxCommand(checked.path));
    else if (file.SegmentNode() == nullptr)
        add(checked, "no_segment", Weight::kMute, "there is no Segment behind the header",
            evidenceAt(file, 0));
    else if (file.GetTrackCnt() == 0)
        add(checked, "no_tracks", Weight::kMute, "no TrackEntry can be read in its Segment",
            evidenceAt(file, file.SegmentNode()->HeaderStart()));
    if (verdict == HeaderVerdict::kReadable && std::string(file.Header.DocType.c_str()) == "webm")
        add(checked, "webm_confidence", Weight::kNote,
            "it is claimed with confidence 0.5 only, so that the framework's own extractor may get it");
}

void judgeSeeking(android::MatroskaExtExtractor& extractor, const CMatroskaFile& head, CheckedFile& checked) {
    CMatroskaFile& file = *extractor.File();
    const IndexReport report = readIndex(extractor);
    checked.seeking = SeekFacts{report.source,    report.points, report.masterPoints, report.masterTrack, 0,
                                report.durationUs};
    judgeDuration(report, head, checked);
    if (report.source == "scan")
        add(checked, "no_cues", Weight::kNote,
            fmt::format(
                "there are no Cues: opening visits every Cluster ({}), and from a network source seeks "
                "start over",
                report.points),
            {}, remuxCommand(checked.path));
    if (report.source == "cues" && report.masterPoints == 0)
        add(checked, "cues_miss_master", Weight::kLoss,
            fmt::format(
                "every seek starts over: none of the {} cue points names the master track (number {})",
                report.points, report.masterTrack),
            {}, remuxCommand(checked.path));
    uint64_t first = 0;
    const uint64_t wrong = report.source == "cues" ? countWrongCues(file, &first) : 0;
    if (wrong > 0)
        add(checked, "cues_astray", Weight::kLoss,
            fmt::format(
                "{} positions of the Cues lead to no Cluster, and seeks go to an earlier one or start over",
                wrong),
            bytesAt(file, first, Evidence::kMostBytes), remuxCommand(checked.path));
}

void judgeLosses(const CMatroskaFile& file, CheckedFile& checked) {
    for (const LossKind kind : {LossKind::kTooLarge, LossKind::kLimit, LossKind::kTooDeep,
                                LossKind::kBadCompression, LossKind::kRefusedAllocation}) {
        const uint64_t count = file.Losses.Count(kind);
        if (count == 0) continue;
        std::optional<Evidence> evidence;
        const auto& list = file.Losses.List();
        const auto found =
            std::find_if(list.begin(), list.end(), [&](const Loss& loss) { return loss.kind == kind; });
        if (found != list.end()) {
            evidence.emplace();
            evidence->offset = found->position;
            evidence->size = found->size;
        }
        add(checked, codeOf(kind), Weight::kLoss, describeLoss(kind, count), evidence);
    }
}

void judgeStructure(CMatroskaFile& file, const ByteAccount& account, CheckedFile& checked) {
    if (account.damageCount > 0) {
        const Damage& first = account.damages.front();
        add(checked, "damaged", Weight::kLoss,
            fmt::format("{} in {} cannot be read as elements, and are skipped",
                        counted(account.damaged, "byte"), counted(account.damageCount, "place")),
            bytesAt(file, first.position, first.size), remuxCommand(checked.path));
    }
    if (account.missing)
        add(checked, "truncated", Weight::kLoss,
            fmt::format("the file is cut off: at least {} at its end are missing",
                        counted(*account.missing, "byte")),
            {}, remuxCommand(checked.path));
    if (account.segments > 1)
        add(checked, "more_segments", Weight::kLoss,
            fmt::format("it holds {} Segments, and only the first one's Clusters are read", account.segments),
            {},
            "mkvmerge and the like read only the first one too: cut the file in front of each EBML header");
    if (account.clusters == 0 && account.segments > 0)
        add(checked, "no_clusters", Weight::kMute, "it holds no Cluster, so that no unit can arrive");
    uint64_t strays = 0, firstStray = 0;
    for (const auto& [number, tally] : account.blocks) {
        if (number <= UINT32_MAX && file.FindTrack(uint32_t(number)) != nullptr) continue;
        if (strays == 0) firstStray = number;
        strays += tally.blocks;
    }
    if (strays > 0)
        add(checked, "blocks_without_track", Weight::kLoss,
            fmt::format("{} with a track number that the file does not have, for instance {}",
                        counted(strays, "block"), firstStray));
}

}  // namespace mkvx
