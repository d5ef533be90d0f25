#include "cost/Elements.h"

#include <algorithm>
#include <iterator>
#include <limits>

#include "base/Log.h"

namespace mkvx {
namespace {

constexpr size_t kMostElements = 1 << 16;
constexpr uint64_t kNowhere = std::numeric_limits<uint64_t>::max();

CostStage stageOfElement(uint32_t elementId) {
    switch (elementId) {
        case id::kTracks:
            return CostStage::kTracks;
        case id::kCues:
            return CostStage::kCues;
        case id::kChapters:
        case id::kAttachments:
        case id::kTags:
            return CostStage::kOther;
        default:
            return CostStage::kHead;
    }
}

// Goes to where the Segment's first child comes next.
bool enterSegment(ElementWalk& walk) {
    while (const std::optional<WalkItem> item = walk.next()) {  // bounded by the walk
        const auto* element = std::get_if<Element>(&item->what);
        if (element != nullptr && element->id == id::kSegment) return true;
        walk.skipChildren();
    }
    return false;
}

// The next child of the Segment; nothing behind its end.
std::optional<Element> nextChild(ElementWalk& walk) {
    while (std::optional<WalkItem> item = walk.next()) {  // bounded by the walk
        walk.skipChildren();
        if (item->depth != 1) return std::nullopt;
        if (auto* element = std::get_if<Element>(&item->what)) return std::move(*element);
    }
    return std::nullopt;
}

}  // namespace

CostElements::CostElements(const android::sp<android::DataSource>& bytes)
    : mBytes(bytes), mFirstCluster(kNowhere) {
    const Opening opening(mBytes);
    if (!opening.isReadable()) return;  // what opening did not find is not mapped
    const MuteLog mute;
    ElementWalk walk(mBytes);
    if (!enterSegment(walk)) return;
    mapRun(walk);
    for (const SeekTarget& target : opening.seekTargets()) mapSeekTarget(target);
}

void CostElements::mapSeekTarget(const SeekTarget& target) {
    if (mElements.count(target.position) != 0) return;
    ElementWalk walk(mBytes);
    if (!enterSegment(walk)) return;
    walk.jumpTo(target.position);
    const std::optional<Element> element = nextChild(walk);
    if (element && element->id == target.id && mapElement(*element)) mapRun(walk);
}

void CostElements::lookBehindClusters() {
    const MuteLog mute;
    ElementWalk walk(mBytes);
    if (!enterSegment(walk)) return;
    while (const std::optional<Element> element = nextChild(walk)) {  // bounded by the walk
        (void)mapElement(*element);  // Clusters, and what is known, are passed over
        if (mElements.size() > kMostElements) return;
    }
}

// Up to a Cluster, or to what is known, or to the end.
void CostElements::mapRun(ElementWalk& walk) {
    std::optional<Element> element;
    do element = nextChild(walk);  // bounded by the walk
    while (element && mapElement(*element));
}

// False for a Cluster, for an element that is known already, and where there are too many.
bool CostElements::mapElement(const Element& element) {
    if (element.id == id::kCluster) {
        mFirstCluster = std::min(mFirstCluster, element.offset);
        return false;
    }
    const bool isNew =
        mElements.emplace(element.offset, Stretch{element.end, stageOfElement(element.id)}).second;
    return isNew && mElements.size() <= kMostElements;
}

const CostElements::Stretch* CostElements::find(uint64_t offset) const {
    const auto behind = mElements.upper_bound(offset);
    if (behind == mElements.begin()) return nullptr;
    const Stretch& stretch = std::prev(behind)->second;
    return offset < stretch.end ? &stretch : nullptr;
}

bool CostElements::isKnown(uint64_t offset) const {
    return offset < mFirstCluster || find(offset) != nullptr;
}

CostStage CostElements::stageOf(uint64_t offset) const {
    if (const Stretch* stretch = find(offset)) return stretch->stage;
    return offset < mFirstCluster ? CostStage::kHead : CostStage::kClusters;
}

}  // namespace mkvx
