#include "cost/Elements.h"

#include <iterator>
#include <limits>

#include "base/Log.h"
#include "matroska/reader/MatroskaReader.h"

namespace mkvx {
namespace {

using MatroskaExtReader::CMatroskaFile;
using MatroskaExtReader::CMatroskaNode;
namespace id = MatroskaExtReader::id;

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

android::sp<CMatroskaNode> firstChildOfSegment(const CMatroskaFile& file) {
    return file.SegmentNode() == nullptr ? nullptr : file.SegmentNode()->Child(0, false);
}

void open(CMatroskaFile& file) {
    const CMatroskaFile::Opening opening(&file);
    (void)file.Init();  // what it did not find is not mapped
}

}  // namespace

CostElements::CostElements(const android::sp<android::DataSource>& bytes)
    : mBytes(bytes), mFirstCluster(kNowhere) {
    MuteLog mute;
    CMatroskaFile file(mBytes);
    open(file);
    const android::sp<CMatroskaNode> first = firstChildOfSegment(file);
    if (first == nullptr) return;
    mapRun(first.get(), false);
    for (const auto& seeks : file.Segment.SeekHeads) {
        for (const auto& entry : seeks->Entries) {
            file.SeekTo(file.Segment.DataStart + entry->SeekPosition.Get());
            const android::sp<CMatroskaNode> node = new CMatroskaNode(file.SegmentNode());
            const bool isNamed = node->IsValid() && node->Id() == uint32_t(entry->SeekID.Get());
            if (isNamed) mapRun(node.get(), false);
        }
    }
}

void CostElements::lookBehindClusters() {
    MuteLog mute;
    CMatroskaFile file(mBytes);
    open(file);
    const android::sp<CMatroskaNode> first = firstChildOfSegment(file);
    if (first != nullptr) mapRun(first.get(), true);
}

// From this element on, up to a Cluster unless those are passed over, or to the end.
void CostElements::mapRun(CMatroskaNode* node, bool passesClusters) {
    do {  // bounded: every step moves forward
        const bool isCluster = node->Id() == id::kCluster;
        if (isCluster) mFirstCluster = std::min(mFirstCluster, node->HeaderStart());
        if (isCluster && !passesClusters) return;
        if (isCluster) continue;
        const bool isNew =
            mElements.emplace(node->HeaderStart(), Element{node->End(), stageOfElement(node->Id())}).second;
        if ((!isNew && !passesClusters) || mElements.size() > kMostElements) return;
    } while (node->Next(false));
}

const CostElements::Element* CostElements::find(uint64_t offset) const {
    const auto behind = mElements.upper_bound(offset);
    if (behind == mElements.begin()) return nullptr;
    const Element& element = std::prev(behind)->second;
    return offset < element.end ? &element : nullptr;
}

bool CostElements::isKnown(uint64_t offset) const {
    return offset < mFirstCluster || find(offset) != nullptr;
}

CostStage CostElements::stageOf(uint64_t offset) const {
    if (const Element* element = find(offset)) return element->stage;
    return offset < mFirstCluster ? CostStage::kHead : CostStage::kClusters;
}

}  // namespace mkvx
