// The file as a whole: its header and its damage.
#include <fmt/format.h>
#include <algorithm>

#include "base/Text.h"
#include "check/Findings.h"
#include "check/Remedy.h"
#include "device/ElementIds.h"
#include "device/ElementWalk.h"
#include "device/Losses.h"

namespace mkvx {
namespace {

constexpr uint64_t kMostMissing = uint64_t{1} << 40;  // bytes
constexpr uint64_t kMostOfHeader = 12;                // bytes of an element's ID and size

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
    return head.bytesAt(found->position, found->size);
}

void judgeDamage(const FileHead& head, const ByteAccount& account, CheckedFile& checked) {
    if (account.damageCount == 0) return;
    const Damage& first = account.damages.front();
    add(checked, "damaged", Weight::kLoss,
        fmt::format("{} in {} cannot be read as elements, and are skipped", counted(account.damaged, "byte"),
                    counted(account.damageCount, "place")),
        head.bytesAt(first.position, first.size), remuxCommand(checked.path));
}

// More than any file has, and out of proportion to what there is.
bool isBeyondReason(uint64_t missing, uint64_t size) {
    return missing > kMostMissing && missing / 1024 > size;
}

void judgeEnd(const FileHead& head, const ByteAccount& account, CheckedFile& checked) {
    if (!account.missing) return;
    const auto [missing, position] = *account.missing;
    const Evidence element = head.evidenceAt(position);
    if (isBeyondReason(missing, checked.size))
        add(checked, "size_damaged", Weight::kNote,
            fmt::format(
                "the size field of the {} at {} is damaged: it says {}; what the file has of it is read",
                element.element, position, counted(element.size, "byte")),
            head.bytesAt(position, kMostOfHeader), remuxCommand(checked.path));
    else
        add(checked, "truncated", Weight::kLoss,
            fmt::format("the file is cut off: at least {} at its end are missing", counted(missing, "byte")),
            element, remuxCommand(checked.path));
}

void judgeSegments(const ByteAccount& account, CheckedFile& checked) {
    if (account.segments > 1)
        add(checked, "more_segments", Weight::kLoss,
            fmt::format("it holds {} Segments, and only the first one's Clusters are read", account.segments),
            {},
            "mkvmerge and the like read only the first one too: cut the file in front of each EBML header");
    if (account.clusters == 0 && account.segments > 0)
        add(checked, "no_clusters", Weight::kMute, "nothing arrives: the file holds no Cluster");
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

// Where the walk through the EBML header ends before its end.
std::optional<uint64_t> gapInHeader(const android::sp<android::DataSource>& source) {
    ElementWalk walk(source);
    while (const std::optional<WalkItem> item = walk.next()) {  // bounded by the header
        if (const auto* gap = std::get_if<Gap>(&item->what)) return gap->offset;
        if (item->depth == 0 && std::get<Element>(item->what).id != id::kEbml) break;
        if (item->depth > 0) walk.skipChildren();
    }
    return std::nullopt;
}

// Of what stands in the place of an element's header: the first byte that begins neither an ID nor a size.
uint64_t firstBadByte(const FileHead& head, uint64_t position) {
    const std::vector<uint8_t> bytes = head.bytesAt(position, kMostOfHeader).bytes;
    size_t idLength = 1;
    for (uint8_t mark = 0x80; !bytes.empty() && (bytes[0] & mark) == 0 && mark > 0x08; mark >>= 1) ++idLength;
    return idLength <= 4 && idLength < bytes.size() && bytes[idLength] == 0 ? position + idLength : position;
}

// A header without a document type: is it one that is damaged?
void judgeHeader(const FileHead& head, const android::sp<android::DataSource>& source, CheckedFile& checked) {
    const std::optional<uint64_t> gap = gapInHeader(source);
    if (!gap)
        return add(checked, "no_doctype", Weight::kMute, "the EBML header names no document type",
                   head.evidenceAt(0), remuxCommand(checked.path));
    const uint64_t bad = firstBadByte(head, *gap);
    add(checked, "bad_header", Weight::kMute,
        fmt::format(
            "the EBML header cannot be read from byte {} on, and no document type is found in front of it",
            bad),
        head.bytesAt(bad, Evidence::kMostBytes), *gap > 0 ? remuxCommand(checked.path) : Remedy());
}

}  // namespace

void judgeDocument(const FileHead& head, const android::sp<android::DataSource>& source,
                   CheckedFile& checked) {
    using Header = DocumentFacts::Header;
    const DocumentFacts document = head.document();
    if (document.header == Header::kOtherDocType && document.docType.empty())
        judgeHeader(head, source, checked);
    else if (document.header == Header::kOtherDocType)
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
            "the framework's own extractor may get it: it is claimed with confidence 0.5 only");
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
    judgeEnd(head, account, checked);
    judgeSegments(account, checked);
    judgeStrays(head, account, checked);
}

}  // namespace mkvx
