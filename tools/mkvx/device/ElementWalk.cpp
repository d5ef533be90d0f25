#include "device/ElementWalk.h"

#include <fmt/format.h>
#include <algorithm>

#include "device/ElementTable.h"
#include "device/ElementValues.h"
#include "matroska/reader/Lacing.h"

namespace mkvx {
namespace {

using android::sp;
using MatroskaExtReader::CMatroskaFile;
using MatroskaExtReader::CMatroskaNode;
using MatroskaExtReader::CUInt;
using MatroskaExtReader::kMaxPosition;
using MatroskaExtReader::SimpleBlock;
using MatroskaExtReader::TrackEntry;

// Gives the element its value where there is one. 0 where it cannot be read, as the reader takes it.
uint64_t takeNumber(CMatroskaNode* node, Element& element) {
    CUInt value;
    node->File()->SeekTo(node->DataStart());
    if (!MatroskaExtReader::Failed(value.Parse(node))) element.value = value.Get();
    return value.Get();
}

Element headerOf(const CMatroskaNode& node) {
    Element element;
    element.id = node.Id();
    element.info = findElement(element.id);
    element.offset = node.HeaderStart();
    element.dataOffset = node.DataStart();
    element.size = node.Size();
    element.hasUnknownSize = node.HasUnknownSize();
    element.payloadEnd = node.PayloadEnd();
    element.end = node.End();
    return element;
}

// Which kinds of loss were noted since this was made?
class LossWatch {
  public:
    explicit LossWatch(const MatroskaExtReader::Losses& losses) : mLosses(losses) {
        for (size_t i = 0; i < kLossKinds; ++i) mBefore[i] = losses.Count(LossKind(i));
    }
    // Of several the last in the order of the kinds.
    std::optional<LossKind> noted() const {
        for (size_t i = kLossKinds; i-- > 0;)
            if (mLosses.Count(LossKind(i)) > mBefore[i]) return LossKind(i);
        return std::nullopt;
    }

  private:
    const MatroskaExtReader::Losses& mLosses;
    uint64_t mBefore[kLossKinds];
};

// One level: the cursor on the current child, and how far the level's elements have been walked.
struct Level {
    sp<CMatroskaNode> node;
    uint32_t parentId = 0;
    uint64_t end = 0;     // of the parent
    uint64_t done = 0;    // where the current child ends
    bool isFirst = true;  // nobody has looked at the current child yet
    bool isOver = false;
};

}  // namespace

struct ElementWalk::State {
    explicit State(const sp<android::DataSource>& source) : file(source) {}

    void begin();
    std::optional<WalkItem> next();
    void jumpTo(uint64_t offset);
    BlockReading readBlock(uint64_t clusterTime);

    CMatroskaFile file;
    std::vector<Level> levels;
    bool descends = false;
    bool hasPending = false;  // the cursor stands on an element that was not given yet, for a gap came first
    ValueContext context;

  private:
    void descend();
    Element take(Level& level);
    template <typename What>
    WalkItem item(What what) const {
        return WalkItem{unsigned(levels.size() - 1), std::move(what)};
    }
    void noteDamage(Element& element, const Level& level) const;
    void remember(Element& element);
    void judgeContent(CMatroskaNode* node, SimpleBlock& block, const TrackEntry& track,
                      BlockReading& reading);
    bool wraps(uint64_t clusterTime, int64_t relative) const;
};

void ElementWalk::State::begin() {
    const sp<CMatroskaNode> root = new CMatroskaNode(&file);
    Level level;
    level.node = new CMatroskaNode(&file);
    level.end = file.Length();
    level.isOver = !level.node->MoveToFirstChildOf(root.get());
    levels.push_back(level);
}

std::optional<WalkItem> ElementWalk::State::next() {
    if (descends) descend();
    descends = false;
    while (!levels.empty()) {  // bounded: each turn ends a level or moves forward in it
        Level& level = levels.back();
        if (hasPending) return item(take(level));
        if (!level.isFirst && !level.isOver) level.isOver = !level.node->Next(false);
        level.isFirst = false;
        const uint64_t from = level.done;
        if (level.isOver) {
            level.done = level.end;
            if (level.end > from && level.end != kMaxPosition) return item(Gap{from, level.end, false});
            levels.pop_back();
        } else if (level.node->HeaderStart() > from) {
            hasPending = true;
            return item(Gap{from, level.node->HeaderStart(), true});
        } else {
            return item(take(level));
        }
    }
    return std::nullopt;
}

void ElementWalk::State::descend() {
    const CMatroskaNode* parent = levels.back().node.get();
    Level level;
    level.node = new CMatroskaNode(&file);
    level.parentId = parent->Id();
    level.end = parent->End();
    level.done = parent->DataStart();
    level.isOver = !level.node->MoveToFirstChildOf(parent);
    levels.push_back(level);
}

void ElementWalk::State::jumpTo(uint64_t offset) {
    if (descends) descend();
    descends = hasPending = false;
    if (levels.size() < 2) return;
    Level& level = levels.back();
    file.SeekTo(offset);
    level.node = new CMatroskaNode(levels[levels.size() - 2].node.get());
    level.done = offset;
    level.isFirst = true;
    level.isOver = !level.node->IsValid();
}

Element ElementWalk::State::take(Level& level) {
    hasPending = false;
    Element element = headerOf(*level.node);
    const bool isDeepest = levels.size() >= kDeepest;
    noteDamage(element, level);
    if (isMaster(element.info) && isDeepest)
        element.notes.emplace_back("nested too deeply: its children are not shown");
    descends = isMaster(element.info) && element.offset < level.end && !isDeepest && element.size != 0;
    level.done = std::max(level.done, element.end);
    remember(element);
    return element;
}

void ElementWalk::State::noteDamage(Element& element, const Level& level) const {
    if (element.offset >= level.end) {
        element.notes.emplace_back("found by the search behind its parent's end");
    } else if (!element.hasUnknownSize && element.payloadEnd > level.end) {
        const bool isFile = file.HasKnownLength() && level.end == file.Length();
        element.notes.push_back(fmt::format("reaches {} bytes past the end of {}",
                                            element.payloadEnd - level.end,
                                            isFile ? "the file" : "its parent"));
    }
    if (!belongsIn(element.info, level.parentId))
        element.notes.push_back(
            fmt::format("does not belong {}", level.parentId == 0 ? "here" : "in this parent"));
    if (element.hasUnknownSize && element.id != id::kSegment && element.id != id::kCluster)
        element.notes.emplace_back("has no size: the plug-in takes it to reach to its parent's end");
}

// What later values are told by, where the reader takes it from.
void ElementWalk::State::remember(Element& element) {
    if (!belongsIn(element.info, levels.back().parentId)) return;
    CMatroskaNode* node = levels.back().node.get();
    if (element.id == id::kSegment) context.segmentData = element.dataOffset;
    if (element.id == id::kCluster) context.clusterTime.reset();
    if (element.id == id::kTimecodeScale) context.scale = takeNumber(node, element);
    if (element.id == id::kClusterTimecode) context.clusterTime = takeNumber(node, element);
}

BlockReading ElementWalk::State::readBlock(uint64_t clusterTime) {
    CMatroskaNode* node = levels.back().node.get();
    SimpleBlock block;
    (void)block.Parse(node);  // what cannot be read counts as zeros
    BlockReading reading;
    reading.track = block.TrackNumber.Get();
    reading.dataOffset = block.DataPosition;
    reading.isTimeWrapped = wraps(clusterTime, block.TimeCode.Get());
    const TrackEntry* track = reading.track <= UINT32_MAX ? file.FindTrack(uint32_t(reading.track)) : nullptr;
    reading.hasTrack = track != nullptr;
    if (track != nullptr) judgeContent(node, block, *track, reading);
    return reading;
}

void ElementWalk::State::judgeContent(CMatroskaNode* node, SimpleBlock& block, const TrackEntry& track,
                                      BlockReading& reading) {
    const LossWatch watch(file.Losses);
    (void)block.GetSize(node, &track);
    reading.isRefused = block.IsRefused();
    if (reading.isRefused) reading.refusedFor = watch.noted();
    if (reading.isRefused || block.Lacing() == MatroskaExtReader::kLacingNone) return;
    // Where the frames come as one nobody looks at their sizes, which may be impossible.
    if (block.FrameSizes.empty()) (void)block.ParseData(node, &track, true);
    reading.laces = block.FrameSizes.size();
}

bool ElementWalk::State::wraps(uint64_t clusterTime, int64_t relative) const {
    const uint64_t most = file.TimecodeScale() == 0 ? UINT64_MAX : UINT64_MAX / file.TimecodeScale();
    const bool isBeforeZero = relative < 0 && uint64_t(-relative) > clusterTime;
    return isBeforeZero || clusterTime > most;
}

const size_t ElementWalk::kMostTracks = MatroskaExtReader::limit::kTrackEntries;

ElementWalk::ElementWalk(const sp<android::DataSource>& source, Knows knows)
    : mState(std::make_unique<State>(source)) {
    if (knows == Knows::kDocument) {
        (void)mState->file.Init();  // what it finds is what there is
        mState->context.scale = mState->file.TimecodeScale();
    }
    mState->begin();
}

ElementWalk::~ElementWalk() = default;

std::optional<WalkItem> ElementWalk::next() {
    return mState->next();
}

void ElementWalk::skipChildren() {
    mState->descends = false;
}

void ElementWalk::jumpTo(uint64_t offset) {
    mState->jumpTo(offset);
}

void ElementWalk::readValue(Element& element) {
    if (!isMaster(element.info)) readElementValue(mState->levels.back().node.get(), mState->context, element);
}

BlockReading ElementWalk::readBlock(uint64_t clusterTime) {
    return mState->readBlock(clusterTime);
}

const ValueContext& ElementWalk::context() const {
    return mState->context;
}

std::optional<uint64_t> ElementWalk::length() const {
    return mState->file.HasKnownLength() ? std::optional<uint64_t>(end()) : std::nullopt;
}

uint64_t ElementWalk::end() const {
    return mState->file.Length();
}

}  // namespace mkvx
