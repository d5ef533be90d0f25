#include <algorithm>

#include "matroska/reader/MatroskaReader.h"
#include "matroska/reader/ParseChildren.h"
#include "matroska/reader/PlainCues.h"

namespace MatroskaExtReader {

namespace {

constexpr uint64_t kMostGrowth = 16;  // of a list, by what the Cues seem to hold

// Reads the child into the number that is meant for it. One that cannot be read is 0.
void ReadNumber(CMatroskaNode* child, uint64_t* number) {
    if (number == nullptr) return;
    CUInt value;
    (void)value.Parse(child);
    *number = value.Get();
}

uint64_t* NumberOf(CueReference* reference, uint32_t id) {
    return id == id::kCueRefTime         ? &reference->CueRefTime
           : id == id::kCueRefCluster    ? &reference->CueRefCluster
           : id == id::kCueRefNumber     ? &reference->CueRefNumber
           : id == id::kCueRefCodecState ? &reference->CueRefCodecState
                                         : nullptr;
}

// Appends what was read from the element at `node`.
template <typename T>
void Keep(Array<T>* list, const T& item, CMatroskaNode* node) {
    if (list->Append(item)) return;
    node->File()->Losses.Add(LossKind::kRefusedAllocation, node->HeaderStart(), node->Size());
}

// Room for what is left of the Cues, if it holds as many items as the bytes that were passed: an array that
// grows by itself is copied more often. Without memory for it, it does that.
template <typename T>
void ReserveAhead(Array<T>* list, size_t items, uint64_t passed, uint64_t left) {
    const uint64_t most = kMostGrowth * list->size();
    (void)list->Reserve(static_cast<size_t>(std::min(most, list->size() + (left / passed + 1) * items)));
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
    CuePoint point;
    if (Failed(point.Parse(node, this)) || AddPoint(point)) return;
    node->File()->Losses.Add(LossKind::kRefusedAllocation, node->HeaderStart(), node->Size());
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
    if (taken >= Points.size() / 2) {
        const uint64_t passed = ahead.next - bytes, left = end - child->End();
        ReserveAhead(&Points, taken, passed, left);
        ReserveAhead(&Positions, Positions.size() - positions, passed, left);
    }
}

Result CuePoint::Parse(CMatroskaNode* node, Cue* lists) {
    if (!node->File()->Admit(Kept::kCuePoint, node)) return kFailure;
    FirstPosition = static_cast<uint32_t>(lists->Positions.size());
    const Result result = VisitChildren(node, [&](CMatroskaNode* child) {
        ReadNumber(child, NumberOf(this, child->Id()));
        CueTrackPosition position;
        if (child->Id() == id::kCueTrackPositions && !Failed(position.Parse(child, lists))) {
            Keep(&lists->Positions, position, child);
        }
        return true;
    });
    PositionCount = static_cast<uint32_t>(lists->Positions.size()) - FirstPosition;
    return result;
}

Result CueTrackPosition::Parse(CMatroskaNode* node, Cue* lists) {
    if (!node->File()->Admit(Kept::kCuePosition, node)) return kFailure;
    FirstReference = static_cast<uint32_t>(lists->References.size());
    const Result result = VisitChildren(node, [&](CMatroskaNode* child) {
        ReadNumber(child, NumberOf(this, child->Id()));
        CueReference reference;
        if (child->Id() == id::kCueReference && !Failed(reference.Parse(child))) {
            Keep(&lists->References, reference, child);
        }
        return true;
    });
    ReferenceCount = static_cast<uint32_t>(lists->References.size()) - FirstReference;
    return result;
}

Result CueReference::Parse(CMatroskaNode* node) {
    if (!node->File()->Admit(Kept::kCueReference, node)) return kFailure;
    return VisitChildren(node, [&](CMatroskaNode* child) {
        ReadNumber(child, NumberOf(this, child->Id()));
        return true;
    });
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
