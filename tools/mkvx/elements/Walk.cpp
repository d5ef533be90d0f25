#include "elements/Walk.h"

#include <fmt/format.h>
#include <algorithm>

namespace mkvx {
namespace {

using MatroskaExtReader::CMatroskaNode;
using MatroskaExtReader::CUInt;
using MatroskaExtReader::ElementType;
using MatroskaExtReader::FindElementInfo;
using MatroskaExtReader::kMaxPosition;
namespace id = MatroskaExtReader::id;

bool isMaster(const Element& element) {
    return element.info != nullptr && element.info->type == ElementType::kMaster;
}

uint64_t numberAt(CMatroskaNode* node) {
    CUInt value;
    node->File()->SeekTo(node->DataStart());
    (void)value.Parse(node);  // 0 when it cannot be read, as the reader takes it
    return value.Get();
}

}  // namespace

ElementWalk::ElementWalk(const android::sp<android::DataSource>& source) : mFile(source) {
    const android::sp<Node> root = new Node(&mFile);
    Level level;
    level.node = new Node(&mFile);
    level.end = mFile.Length();
    level.isOver = !level.node->MoveToFirstChildOf(root.get());
    mLevels.push_back(level);
}

std::optional<uint64_t> ElementWalk::length() const {
    return mFile.HasKnownLength() ? std::optional<uint64_t>(mFile.Length()) : std::nullopt;
}

std::optional<TreeItem> ElementWalk::next() {
    if (mDescend) descend();
    mDescend = false;
    while (!mLevels.empty()) {  // bounded: each turn ends a level or moves forward in it
        Level& level = mLevels.back();
        if (mHasPending) return item(take(level));
        if (!level.isFirst && !level.isOver) level.isOver = !level.node->Next(false);
        level.isFirst = false;
        const uint64_t from = level.done;
        if (level.isOver) {
            level.done = level.end;
            if (level.end > from && level.end != kMaxPosition) return gap(from, level.end, false);
            mLevels.pop_back();
        } else if (level.node->HeaderStart() > from) {
            mHasPending = true;
            return gap(from, level.node->HeaderStart(), true);
        } else {
            return item(take(level));
        }
    }
    return std::nullopt;
}

void ElementWalk::readValue(Element& element) {
    if (!isMaster(element)) readElementValue(mLevels.back().node.get(), mContext, element);
}

void ElementWalk::descend() {
    const Node* parent = mLevels.back().node.get();
    Level level;
    level.node = new Node(&mFile);
    level.parentId = parent->Id();
    level.end = parent->End();
    level.done = parent->DataStart();
    level.isOver = !level.node->MoveToFirstChildOf(parent);
    mLevels.push_back(level);
}

Element ElementWalk::take(Level& level) {
    mHasPending = false;
    const Node* node = level.node.get();
    Element element;
    element.id = node->Id();
    element.info = FindElementInfo(element.id);
    element.offset = node->HeaderStart();
    element.dataOffset = node->DataStart();
    element.size = node->Size();
    element.hasUnknownSize = node->HasUnknownSize();
    element.end = node->End();
    const bool isOutside = element.offset >= level.end;
    noteDamage(element, level);
    if (isMaster(element) && mLevels.size() >= kDeepest)
        element.notes.emplace_back("nested too deeply: its children are not shown");
    mDescend = isMaster(element) && !isOutside && mLevels.size() < kDeepest && element.size != 0;
    level.done = std::max(level.done, element.end);
    remember(element);
    return element;
}

void ElementWalk::noteDamage(Element& element, const Level& level) const {
    const uint64_t payloadEnd = level.node->PayloadEnd();
    if (element.offset >= level.end) {
        element.notes.emplace_back("found by the search behind its parent's end");
    } else if (!element.hasUnknownSize && payloadEnd > level.end) {
        const bool isFile = mFile.HasKnownLength() && level.end == mFile.Length();
        element.notes.push_back(fmt::format("reaches {} bytes past the end of {}", payloadEnd - level.end,
                                            isFile ? "the file" : "its parent"));
    }
    if (!belongsIn(element.info, level.parentId))
        element.notes.push_back(
            fmt::format("does not belong {}", level.parentId == 0 ? "here" : "in this parent"));
    if (element.hasUnknownSize && element.id != id::kSegment && element.id != id::kCluster)
        element.notes.emplace_back("has no size: the plug-in takes it to reach to its parent's end");
}

// What later values are told by, where the reader takes it from.
void ElementWalk::remember(const Element& element) {
    if (!belongsIn(element.info, mLevels.back().parentId)) return;
    Node* node = mLevels.back().node.get();
    if (element.id == id::kSegment) mContext.segmentData = element.dataOffset;
    if (element.id == id::kCluster) mContext.clusterTime.reset();
    if (element.id == id::kTimecodeScale) mContext.scale = numberAt(node);
    if (element.id == id::kClusterTimecode) mContext.clusterTime = numberAt(node);
}

TreeItem ElementWalk::item(Element element) const {
    return TreeItem{unsigned(mLevels.size() - 1), std::move(element)};
}

TreeItem ElementWalk::gap(uint64_t from, uint64_t to, bool isResynchronised) const {
    return TreeItem{unsigned(mLevels.size() - 1), Gap{from, to, isResynchronised}};
}

}  // namespace mkvx
