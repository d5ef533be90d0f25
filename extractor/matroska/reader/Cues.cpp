#include <algorithm>

#include "matroska/reader/MatroskaReader.h"
#include "matroska/reader/ParseChildren.h"
#include "matroska/reader/PlainCues.h"

namespace MatroskaExtReader {

namespace {

// By what the Cues seem to hold a list grows by as many bytes, or to as many times its size.
constexpr uint64_t kTrustedBytes = 4u << 20;
constexpr uint64_t kMostGrowth = 16;

// Reads the child into the number that is meant for it. One that cannot be read is 0.
void ReadNumber(CMatroskaNode* child, uint64_t* number) {
    if (number == nullptr) return;
    CUInt value;
    (void)value.Parse(child);
    *number = value.Get();
}

uint64_t* NumberOf(CueBlock* block, uint32_t id) {
    return id == id::kCueBlockNumber  ? &block->CueBlockNumber
           : id == id::kCueCodecState ? &block->CueCodecState
                                      : nullptr;
}

uint64_t* NumberOf(CueReference* reference, uint32_t id) {
    return id == id::kCueRefTime         ? &reference->CueRefTime
           : id == id::kCueRefCluster    ? &reference->CueRefCluster
           : id == id::kCueRefNumber     ? &reference->CueRefNumber
           : id == id::kCueRefCodecState ? &reference->CueRefCodecState
                                         : nullptr;
}

// Appends what is read from the element at `node`.
template <typename T>
bool Keep(Array<T>* list, const T& item, CMatroskaNode* node) {
    if (list->Append(item)) return true;
    node->File()->Losses.Add(LossKind::kRefusedAllocation, node->HeaderStart(), node->Size());
    return false;
}

// Room for what is left of the Cues if its items are as long as those of the bytes that were passed: an array
// that grows by itself is copied more often. Without memory for it, it does that.
template <typename T>
void ReserveAhead(Array<T>* list, size_t items, uint64_t passed, uint64_t left) {
    if (items == 0) return;
    const uint64_t held = list->size(), ahead = left / (passed / items);
    const uint64_t next = std::min<uint64_t>(ahead, 3 * items);  // pieces may double
    if (held + next <= list->room()) return;
    const uint64_t most = std::max<uint64_t>(kMostGrowth * held, held + kTrustedBytes / sizeof(T));
    (void)list->Reserve(static_cast<size_t>(std::min(most, held + ahead)));
}

}  // namespace

Result Cue::Parse(CMatroskaNode* node) {
    return VisitWhole(node, [this, node](CMatroskaNode* child) {
        if (child->Id() == id::kCuePoint) ParsePoint(child);
        PassPlainPoints(child, node->End());
        return true;
    });
}

void Cue::ParsePoint(CMatroskaNode* node) {
    if (!node->File()->Admit(Kept::kCuePoint, node)) return;
    CuePoint point;
    point.FirstPosition = static_cast<uint32_t>(Positions.size());
    const Result result = VisitChildren(node, [&](CMatroskaNode* child) {
        ReadNumber(child, NumberOf(&point, child->Id()));
        if (child->Id() == id::kCueTrackPositions) ParsePosition(child);
        return true;
    });
    if (Failed(result)) return;
    point.PositionCount = static_cast<uint32_t>(Positions.size()) - point.FirstPosition;
    if (!AddPoint(point))
        node->File()->Losses.Add(LossKind::kRefusedAllocation, node->HeaderStart(), node->Size());
}

// The position takes its place first, which what belongs to it names.
void Cue::ParsePosition(CMatroskaNode* node) {
    if (!node->File()->Admit(Kept::kCuePosition, node)) return;
    if (!Keep(&Positions, CueTrackPosition(), node)) return;
    CueBlock block;
    block.Position = static_cast<uint32_t>(Positions.size() - 1);
    const Result result = VisitChildren(node, [&](CMatroskaNode* child) {
        ReadNumber(child, NumberOf(&Positions.back(), child->Id()));
        ReadNumber(child, NumberOf(&block, child->Id()));
        if (child->Id() == id::kCueReference) ParseReference(child);
        return true;
    });
    if (Failed(result)) Positions.PopBack();
    if (block.CueBlockNumber != 0 || block.CueCodecState != 0) (void)Keep(&Blocks, block, node);
}

void Cue::ParseReference(CMatroskaNode* node) {
    if (!node->File()->Admit(Kept::kCueReference, node)) return;
    CueReference reference;
    reference.Position = static_cast<uint32_t>(Positions.size() - 1);
    const Result result = VisitChildren(node, [&](CMatroskaNode* child) {
        ReadNumber(child, NumberOf(&reference, child->Id()));
        return true;
    });
    if (!Failed(result)) (void)Keep(&References, reference, node);
}

// Takes the plain points behind `child` from what is held of the Cues, which end at `end`, and moves it on to
// the last of them.
void Cue::PassPlainPoints(CMatroskaNode* child, uint64_t end) {
    CMatroskaFile* const file = child->File();
    const uint64_t start = child->End();
    CountedBytes ahead(file->RestOfPiece(start));
    const uint8_t* const bytes = ahead.begin;
    PlainElement last;
    const size_t positions = Positions.size();
    const size_t taken = TakePlainPoints(&ahead, file->RoomFor(Kept::kCuePoint),
                                         file->RoomFor(Kept::kCuePosition), this, &last);
    if (taken == 0) return;
    file->Admit(Kept::kCuePoint, taken);
    file->Admit(Kept::kCuePosition, Positions.size() - positions);
    child->StandOn(last.header, start + (last.start - bytes), start + (last.data - bytes));
    file->PassHeld(ahead);
    const uint64_t passed = ahead.next - bytes, left = std::min(end, file->Length()) - child->End();
    ReserveAhead(&Points, taken, passed, left);
    ReserveAhead(&Positions, Positions.size() - positions, passed, left);
}

bool Cue::AddPoint(uint64_t time, uint64_t track, uint64_t clusterPosition) {
    CuePoint point;
    point.CueTime = time;
    point.FirstPosition = static_cast<uint32_t>(Positions.size());
    point.PositionCount = 1;
    CueTrackPosition position;
    position.CueTrack = track;
    position.CueClusterPosition = clusterPosition;
    return Positions.Append(position) && AddPoint(point);
}

}  // namespace MatroskaExtReader
