#include "check/Extras.h"

#include <fmt/format.h>

#include "base/Text.h"
#include "check/Findings.h"

namespace mkvx {
namespace {

// Which the reader has no names for.
constexpr uint32_t kEditionFlagOrdered = 0x45DD, kChapterSegmentUuid = 0x6E67;
constexpr uint64_t kSlightNs = 1000000;

uint64_t numberOf(Element element, ElementWalk& walk) {
    walk.readValue(element);
    const auto* number = std::get_if<uint64_t>(&element.value);
    return number != nullptr ? *number : 0;
}

bool areApart(uint64_t a, uint64_t b) {
    return (a > b ? a - b : b - a) > kSlightNs;
}

std::string contentOf(const TrackVerdict& track, const AdditionTally& tally) {
    const bool isVpx = track.codecId == "V_VP8" || track.codecId == "V_VP9";
    if (tally.lastId == 1 && isVpx) return "its alpha channel";
    if (tally.lastId == 4) return "metadata after ITU-T T.35, HDR10+ for instance";
    return fmt::format("what goes with its frames under BlockAddID {}", tally.lastId);
}

void judgeAdditions(const FileHead& head, const AdditionTally& tally, TrackVerdict& track) {
    const std::string content = contentOf(track, tally);
    const bool isAlpha = content == "its alpha channel";
    track.findings.push_back({isAlpha ? "alpha_withheld" : "additions_withheld",
                              Weight::kLoss,
                              fmt::format("{} is not handed out{}: {} in the BlockAdditions of {}", content,
                                          isAlpha ? ", and what is transparent is shown opaque" : "",
                                          counted(tally.bytes, "byte"), counted(tally.blocks, "block")),
                              head.evidenceAt(tally.first),
                              {}});
}

void judgeOrder(const FileHead& head, const OrderedEdition& edition, CheckedFile& checked) {
    const std::string effect = edition.isPlain ? ", which is the same here"
                                               : ", so that parts come in another order, twice or unasked";
    checked.findings.push_back(
        {"chapters_ordered",
         edition.isPlain ? Weight::kNote : Weight::kLoss,
         fmt::format(
             "the file is to be played by the {} of an ordered edition, and a device plays it from its "
             "start to its end{}",
             counted(edition.chapters, "chapter"), effect),
         head.evidenceAt(edition.position),
         {}});
}

void judgeLinks(const FileHead& head, const Extras& extras, CheckedFile& checked) {
    if (extras.linkedChapters > 0)
        checked.findings.push_back(
            {"chapters_linked",
             Weight::kLoss,
             fmt::format("{}, which a device does not look for",
                         extras.linkedChapters == 1
                             ? "1 chapter lies in another file"
                             : fmt::format("{} chapters lie in other files", extras.linkedChapters)),
             head.evidenceAt(*extras.firstLinked),
             {}});
    const auto link = extras.goesOn ? extras.goesOn : extras.cameBefore;
    if (link)
        checked.findings.push_back({"segments_linked",
                                    Weight::kNote,
                                    fmt::format("the film {} another file, which a device does not look for",
                                                extras.goesOn ? "goes on in" : "begins in"),
                                    head.evidenceAt(*link),
                                    {}});
}

}  // namespace

void judgeExtras(const FileHead& head, const Extras& extras, CheckedFile& checked) {
    for (TrackVerdict& track : checked.tracks) {
        const auto tally = extras.additions.find(track.number);
        if (track.isOffered() && tally != extras.additions.end()) judgeAdditions(head, tally->second, track);
    }
    if (extras.ordered) judgeOrder(head, *extras.ordered, checked);
    judgeLinks(head, extras, checked);
}

void ExtrasTally::take(const Element& element, const std::vector<Element>& way, uint64_t blockTrack,
                       ElementWalk& walk) {
    if (element.id == id::kBlockAdditions || element.id == id::kBlockAddId ||
        element.id == id::kBlockAdditional)
        return takeAddition(element, blockTrack, walk);
    if (element.id == id::kNextUid && element.size > 0) mExtras.goesOn = element.offset;
    if (element.id == id::kPrevUid && element.size > 0) mExtras.cameBefore = element.offset;
    const bool isTop = way.size() > 1 && way[way.size() - 2].id == id::kEditionEntry;
    takeChapter(element, isTop, walk);
}

void ExtrasTally::takeAddition(const Element& element, uint64_t blockTrack, ElementWalk& walk) {
    const bool isNew = mExtras.additions.count(blockTrack) == 0;
    if (isNew && mExtras.additions.size() >= ElementWalk::kMostTracks) return;
    AdditionTally& tally = mExtras.additions[blockTrack];
    if (element.id == id::kBlockAdditional) tally.bytes += element.size;
    if (element.id == id::kBlockAddId) tally.lastId = numberOf(element, walk);
    if (element.id == id::kBlockAdditions && tally.blocks++ == 0) tally.first = element.offset;
}

// `isTop`: a child of a chapter that is not part of another.
void ExtrasTally::takeChapter(const Element& element, bool isTop, ElementWalk& walk) {
    switch (element.id) {
        case id::kEditionEntry:
            endEdition();
            mEdition = OrderedEdition{element.offset, 0, true};
            mEndNs = 0;
            break;
        case kEditionFlagOrdered:
            mIsOrdered = numberOf(element, walk) != 0;
            break;
        case id::kChapterTimeStart:
            if (!isTop || !mEdition) break;
            ++mEdition->chapters;
            if (areApart(numberOf(element, walk), mEndNs)) mEdition->isPlain = false;
            break;
        case id::kChapterTimeEnd:
            if (isTop) mEndNs = numberOf(element, walk);
            break;
        case kChapterSegmentUuid:
            if (mExtras.linkedChapters++ == 0) mExtras.firstLinked = element.offset;
            break;
        default:
            break;
    }
}

void ExtrasTally::endEdition() {
    if (mEdition && mIsOrdered && !mExtras.ordered) mExtras.ordered = mEdition;
    mEdition.reset();
    mIsOrdered = false;
}

Extras ExtrasTally::finish() {
    endEdition();
    return std::move(mExtras);
}

}  // namespace mkvx
