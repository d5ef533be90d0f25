#include "matroska/reader/MatroskaReader.h"
#include "matroska/reader/ParseChildren.h"

namespace MatroskaExtReader {

namespace {

// A number that cannot be read is 0.
void Take(CMatroskaNode* node, uint64_t* number) {
    CUInt value;
    (void)value.Parse(node);
    *number = value.Get();
}

}  // namespace

Result Cue::Parse(CMatroskaNode* node) {
    return VisitChildren(node, [this](CMatroskaNode* child) {
        if (child->Id() == id::kCuePoint) (void)ParsePoint(child);
        return true;
    });
}

// Appends the point when it has a readable child, as a list of repeated masters would.
Result Cue::ParsePoint(CMatroskaNode* node) {
    if (!node->File()->Admit(Kept::kCuePoint, node)) return kFailure;
    CuePoint point;
    point.FirstPosition = static_cast<uint32_t>(Positions.size());
    const Result result = VisitChildren(node, [&](CMatroskaNode* child) {
        if (child->Id() == id::kCueTime) Take(child, &point.CueTime);
        if (child->Id() == id::kCueTrackPositions) (void)ParsePosition(child);
        return true;
    });
    if (Failed(result)) return result;
    point.PositionCount = static_cast<uint32_t>(Positions.size()) - point.FirstPosition;
    Append(point);
    return kOk;
}

Result Cue::ParsePosition(CMatroskaNode* node) {
    if (!node->File()->Admit(Kept::kCuePosition, node)) return kFailure;
    CueTrackPosition position;
    position.FirstReference = static_cast<uint32_t>(References.size());
    const Result result = VisitChildren(node, [&](CMatroskaNode* child) {
        switch (child->Id()) {
            case id::kCueTrack:
                Take(child, &position.CueTrack);
                break;
            case id::kCueClusterPosition:
                Take(child, &position.CueClusterPosition);
                break;
            case id::kCueBlockNumber:
                Take(child, &position.CueBlockNumber);
                break;
            case id::kCueCodecState:
                Take(child, &position.CueCodecState);
                break;
            case id::kCueReference:
                (void)ParseReference(child);
                break;
            default:
                break;
        }
        return true;
    });
    if (Failed(result)) return result;
    position.ReferenceCount = static_cast<uint32_t>(References.size()) - position.FirstReference;
    Positions.push_back(position);
    return kOk;
}

Result Cue::ParseReference(CMatroskaNode* node) {
    if (!node->File()->Admit(Kept::kCueReference, node)) return kFailure;
    CueReference reference;
    const Result result = VisitChildren(node, [&](CMatroskaNode* child) {
        switch (child->Id()) {
            case id::kCueRefTime:
                Take(child, &reference.CueRefTime);
                break;
            case id::kCueRefCluster:
                Take(child, &reference.CueRefCluster);
                break;
            case id::kCueRefNumber:
                Take(child, &reference.CueRefNumber);
                break;
            case id::kCueRefCodecState:
                Take(child, &reference.CueRefCodecState);
                break;
            default:
                break;
        }
        return true;
    });
    if (!Failed(result)) References.push_back(reference);
    return result;
}

void Cue::Append(const CuePoint& point) {
    mIsOrdered = mIsOrdered && (Points.empty() || Points.back().CueTime <= point.CueTime);
    Points.push_back(point);
}

void Cue::AddPoint(uint64_t time, uint64_t track, uint64_t clusterPosition) {
    CuePoint point;
    point.CueTime = time;
    point.FirstPosition = static_cast<uint32_t>(Positions.size());
    point.PositionCount = 1;
    CueTrackPosition position;
    position.CueTrack = track;
    position.CueClusterPosition = clusterPosition;
    Append(point);
    Positions.push_back(position);
}

}  // namespace MatroskaExtReader
