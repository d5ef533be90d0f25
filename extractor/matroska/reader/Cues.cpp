#include "matroska/reader/MatroskaReader.h"
#include "matroska/reader/ParseChildren.h"

namespace MatroskaExtReader {

namespace {

// An element that is a number, and where it goes.
template <typename X>
struct NumberRow {
    uint32_t id;
    uint64_t X::*member;
};

// A number that cannot be read is 0.
template <typename X, size_t N>
void TakeNumber(X* object, CMatroskaNode* child, const NumberRow<X> (&rows)[N]) {
    for (const NumberRow<X>& row : rows) {
        if (row.id != child->Id()) continue;
        CUInt value;
        (void)value.Parse(child);
        object->*row.member = value.Get();
        return;
    }
}

// Appends what was read from the element at `node`.
template <typename T>
void Keep(Array<T>* list, const T& item, CMatroskaNode* node) {
    if (list->Append(item)) return;
    node->File()->Losses.Add(LossKind::kRefusedAllocation, node->HeaderStart(), node->Size());
}

}  // namespace

Result Cue::Parse(CMatroskaNode* node) {
    return VisitWhole(node, [this](CMatroskaNode* child) {
        CuePoint point;
        if (child->Id() != id::kCuePoint || Failed(point.Parse(child, this))) return true;
        Keep(&Points, point, child);
        NoteOrder();
        return true;
    });
}

Result CuePoint::Parse(CMatroskaNode* node, Cue* lists) {
    static const NumberRow<CuePoint> kRows[] = {{id::kCueTime, &CuePoint::CueTime}};
    if (!node->File()->Admit(Kept::kCuePoint, node)) return kFailure;
    FirstPosition = static_cast<uint32_t>(lists->Positions.size());
    const Result result = VisitChildren(node, [&](CMatroskaNode* child) {
        TakeNumber(this, child, kRows);
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
    static const NumberRow<CueTrackPosition> kRows[] = {
        {id::kCueTrack, &CueTrackPosition::CueTrack},
        {id::kCueClusterPosition, &CueTrackPosition::CueClusterPosition},
        {id::kCueBlockNumber, &CueTrackPosition::CueBlockNumber},
        {id::kCueCodecState, &CueTrackPosition::CueCodecState},
    };
    if (!node->File()->Admit(Kept::kCuePosition, node)) return kFailure;
    FirstReference = static_cast<uint32_t>(lists->References.size());
    const Result result = VisitChildren(node, [&](CMatroskaNode* child) {
        TakeNumber(this, child, kRows);
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
    static const NumberRow<CueReference> kRows[] = {
        {id::kCueRefTime, &CueReference::CueRefTime},
        {id::kCueRefCluster, &CueReference::CueRefCluster},
        {id::kCueRefNumber, &CueReference::CueRefNumber},
        {id::kCueRefCodecState, &CueReference::CueRefCodecState},
    };
    if (!node->File()->Admit(Kept::kCueReference, node)) return kFailure;
    return VisitChildren(node, [&](CMatroskaNode* child) {
        TakeNumber(this, child, kRows);
        return true;
    });
}

void Cue::NoteOrder() {
    const size_t count = Points.size();
    mIsOrdered = mIsOrdered && (count < 2 || Points[count - 2].CueTime <= Points[count - 1].CueTime);
}

bool Cue::AddPoint(uint64_t time, uint64_t track, uint64_t clusterPosition) {
    CuePoint point;
    point.CueTime = time;
    point.FirstPosition = static_cast<uint32_t>(Positions.size());
    point.PositionCount = 1;
    CueTrackPosition position;
    position.CueTrack = track;
    position.CueClusterPosition = clusterPosition;
    if (!Positions.Append(position) || !Points.Append(point)) return false;
    NoteOrder();
    return true;
}

}  // namespace MatroskaExtReader
