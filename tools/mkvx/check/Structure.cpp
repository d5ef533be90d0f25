// The file as a whole: its header and its damage.
#include <fmt/format.h>
#include <algorithm>

#include "base/Text.h"
#include "check/Findings.h"
#include "check/Remedy.h"
#include "device/ElementIds.h"
#include "device/Losses.h"

namespace mkvx {
namespace {

void add(CheckedFile& checked, const char* code, Weight weight, std::string sentence,
         std::optional<Evidence> evidence = {}, Remedy remedy = {}) {
    checked.findings.push_back({code, weight, std::move(sentence), std::move(evidence), std::move(remedy)});
}

std::string totalText(LossKind kind, uint64_t count) {
    return fmt::format(fmt::runtime(textOf(kind).total), counted(count, textOf(kind).noun));
}

// Nothing when the reader's list was full before.
std::optional<Evidence> firstPlaceOf(const FileHead& head, LossKind kind) {
    const std::vector<Loss> list = head.losses();
    const auto found =
        std::find_if(list.begin(), list.end(), [&](const Loss& loss) { return loss.kind == kind; });
    if (found == list.end()) return std::nullopt;
    Evidence evidence;
    evidence.offset = found->position;
    evidence.size = found->size;
    return evidence;
}

void judgeDamage(const FileHead& head, const ByteAccount& account, CheckedFile& checked) {
    if (account.damageCount == 0) return;
    const Damage& first = account.damages.front();
    add(checked, "damaged", Weight::kLoss,
        fmt::format("{} in {} cannot be read as elements, and are skipped", counted(account.damaged, "byte"),
                    counted(account.damageCount, "place")),
        head.bytesAt(first.position, first.size), remuxCommand(checked.path));
}

void judgeEnd(const ByteAccount& account, CheckedFile& checked) {
    if (account.missing)
        add(checked, "truncated", Weight::kLoss,
            fmt::format("the file is cut off: at least {} at its end are missing",
                        counted(*account.missing, "byte")),
            {}, remuxCommand(checked.path));
}

void judgeSegments(const ByteAccount& account, CheckedFile& checked) {
    if (account.segments > 1)
        add(checked, "more_segments", Weight::kLoss,
            fmt::format("it holds {} Segments, and only the first one's Clusters are read", account.segments),
            {},
            "mkvmerge and the like read only the first one too: cut the file in front of each EBML header");
    if (account.clusters == 0 && account.segments > 0)
        add(checked, "no_clusters", Weight::kMute, "it holds no Cluster, so that no unit can arrive");
}

void judgeStrays(const FileHead& head, const ByteAccount& account, CheckedFile& checked) {
    uint64_t strays = 0, firstStray = 0;
    for (const auto& [number, tally] : account.blocks) {
        if (head.findTrack(number)) continue;
        if (strays == 0) firstStray = number;
        strays += tally.blocks;
    }
    if (strays > 0)
        add(checked, "blocks_without_track", Weight::kLoss,
            fmt::format("{} with a track number that the file does not have, for instance {}",
                        counted(strays, "block"), firstStray),
            {}, remuxCommand(checked.path));
}

}  // namespace

void judgeDocument(const FileHead& head, CheckedFile& checked) {
    using Header = DocumentFacts::Header;
    const DocumentFacts document = head.document();
    if (document.header == Header::kOtherDocType)
        add(checked, "other_doctype", Weight::kMute,
            fmt::format("the document type is \"{}\", and only matroska and webm are read",
                        printable(document.docType)),
            head.evidenceBelowOr(0, {id::kDocType}),
            document.docType.empty() ? copyCommand(checked.path) : Remedy());
    else if (document.header == Header::kTooNew)
        add(checked, "doctype_too_new", Weight::kMute,
            fmt::format("it asks for a reader of version {}, and this one reads up to 2",
                        document.readVersion),
            head.evidenceBelowOr(0, {id::kDocTypeReadVersion}), remuxCommand(checked.path));
    else if (!document.segment)
        add(checked, "no_segment", Weight::kMute, "there is no Segment behind the header",
            head.evidenceAt(0));
    else if (head.trackCount() == 0)
        add(checked, "no_tracks", Weight::kMute, "no TrackEntry can be read in its Segment",
            head.evidenceAt(*document.segment));
    if (document.header == Header::kReadable && document.docType == "webm")
        add(checked, "webm_confidence", Weight::kNote,
            "it is claimed with confidence 0.5 only, so that the framework's own extractor may get it");
}

void judgeLosses(const FileHead& head, CheckedFile& checked) {
    for (const LossKind kind : {LossKind::kTooLarge, LossKind::kLimit, LossKind::kTooDeep,
                                LossKind::kBadCompression, LossKind::kRefusedAllocation}) {
        const uint64_t count = head.lossCount(kind);
        if (count > 0)
            add(checked, textOf(kind).identifier, Weight::kLoss, totalText(kind, count),
                firstPlaceOf(head, kind));
    }
}

void judgeStructure(const FileHead& head, const ByteAccount& account, CheckedFile& checked) {
    judgeDamage(head, account, checked);
    judgeEnd(account, checked);
    judgeSegments(account, checked);
    judgeStrays(head, account, checked);
}

}  // namespace mkvx
