// The sync index: from the Cues, or from a visit of every Cluster where there are none.
#include <algorithm>

#include "matroska/reader/MatroskaReader.h"
#include "matroska/reader/OrderedSearch.h"

namespace MatroskaExtReader {

namespace {

// A walk so long is worth a note.
constexpr uint64_t kFarBytes = 4096;

// Deliberate: the Duration that a scan leaves has the precision of a single-precision float.
double RoundedToSingle(uint64_t units) {
    return static_cast<double>(static_cast<float>(units));
}

bool IsEarlier(const IndexItem& a, const IndexItem& b) {
    return a.Time < b.Time;
}

// Strictly descending by Time.
bool IsDescending(const Array<IndexItem>& items) {
    for (size_t i = 1; i < items.size(); ++i) {
        if (items[i].Time >= items[i - 1].Time) return false;
    }
    return true;
}

// The value of the Cluster's first Timecode, 0 where there is none. Looks for it with `child`; what a Cluster
// that has none is found to be is noted.
uint64_t FirstTimecode(CMatroskaNode* cluster, CMatroskaNode* child) {
    CUInt value;
    CMatroskaFile* const file = cluster->File();
    const uint64_t trouble = file->Trouble();
    bool isInside = child->MoveToFirstChildOf(cluster), hasBlock = false;
    while (isInside && child->Id() != id::kClusterTimecode) {  // bounded: every step moves forward
        hasBlock = hasBlock || child->IsBlockElement();
        isInside = child->Next(false);
    }
    if (isInside) (void)value.Parse(child);
    if (isInside || cluster->Size() == 0 || file->Trouble() != trouble) return value.Get();
    const UntimedCluster untimed = {cluster->HeaderStart(), child->WalkEnd(), hasBlock};
    cluster->KnowOpenEnd(untimed.end);
    if (untimed.end - cluster->DataStart() > kFarBytes) file->Untimed.Note(untimed);
    return value.Get();
}

}  // namespace

ClusterScan::ClusterScan(CMatroskaFile* file)
    : mFile(file), mTrouble(file->Trouble()), mChild(new CMatroskaNode(file)), mPoints(new Cue) {}

void ClusterScan::Add(CMatroskaNode* cluster) {
    if (IsFull()) return;
    const uint64_t time = FirstTimecode(cluster, mChild.get());
    if (!mPoints->AddPoint(time, 0, cluster->HeaderStart() - mFile->Segment.DataStart))
        mFile->Losses.Add(LossKind::kRefusedAllocation, cluster->HeaderStart(), 0);
    mFile->SeekTo(cluster->DataStart());
}

bool ClusterScan::IsSound() const {
    return mFile->Trouble() == mTrouble && !IsFull();
}

void CMatroskaFile::RebuildIndex() {
    const Heads heads(this);
    const AutoPtr<Cue> cue = VisitClusters();
    const uint64_t track = Segment.GetMasterTrack();
    for (CueTrackPosition& position : cue->Positions) position.CueTrack = track;
    cue->IsSynthesised = true;
    Segment.Info.Duration.Set(cue->Points.empty() ? 0.0 : RoundedToSingle(cue->Points.back().CueTime));
    Segment.Cues.Append(cue);
}

// The Clusters of the first Segment, from the first that is found: those that were passed at parsing, unless
// it was another Segment that was parsed, or a SeekHead leads elsewhere.
AutoPtr<Cue> CMatroskaFile::VisitClusters() {
    const AutoPtr<Cue> passed = Segment.PassedClusters;
    Segment.PassedClusters.clear();
    const bool isHere = mSegmentNode != nullptr && mSegmentNode->DataStart() == Segment.DataStart;
    if (passed != nullptr && isHere && mSegmentNode->FindPos(id::kCluster, 0) == 0) return passed;

    ClusterScan scan(this);
    const android::sp<CMatroskaNode> node = FirstCluster();
    while (node != nullptr) {  // bounded: every step moves forward
        if (scan.IsFull()) {
            Losses.Add(LossKind::kLimit, node->HeaderStart(), 0);
            break;
        }
        scan.Add(node.get());
        if (!node->Next(true)) break;
    }
    return scan.Points();
}

android::status_t CMatroskaFile::BuildIndexForSync() {
    if (mIndex.Build(Segment.Cues, TimecodeScale())) return android::OK;
    Losses.Add(LossKind::kRefusedAllocation, Segment.DataStart, 0);
    return android::NO_MEMORY;
}

bool SyncIndex::Build(const CNode<Cue>& cues, uint64_t scale) {
    mScale = scale;
    mSorted.clear();
    const bool isOrdered = IsOrdered(cues);
    mOrdered = isOrdered ? cues[0] : nullptr;
    return isOrdered || Sort(cues);
}

// Times that differ by a microsecond for each unit, and of which none wraps, ascend as those of the file do.
bool SyncIndex::IsOrdered(const CNode<Cue>& cues) const {
    if (cues.size() != 1 || !cues[0]->IsIndex() || cues[0]->Points.empty()) return false;
    return mScale >= 1000 && cues[0]->Points.back().CueTime <= UINT64_MAX / mScale;
}

bool SyncIndex::Sort(const CNode<Cue>& cues) {
    size_t most = 0;
    for (const AutoPtr<Cue>& cue : cues) most += std::min(cue->Points.size(), cue->Positions.size());
    if (!mSorted.Reserve(most)) return false;
    for (const AutoPtr<Cue>& cue : cues) {
        for (size_t i = cue->Points.size(); i-- > 0;) {
            const CuePoint& point = cue->Points[i];
            if (point.PositionCount != 0) (void)mSorted.Append(ItemOf(*cue, point));
        }
    }
    // Cues in their usual order arrive here backwards.
    if (IsDescending(mSorted)) {
        std::reverse(mSorted.begin(), mSorted.end());
    } else {
        std::stable_sort(mSorted.begin(), mSorted.end(), IsEarlier);
    }
    return true;
}

// What is searched is the order that parsing noted, of the times as they stand in the file; it is also that
// of the microseconds only where none of them wraps.
size_t CMatroskaFile::CountCuePointsUpTo(const Cue& cue, uint64_t timeUs) const {
    const Array<CuePoint>& points = cue.Points;
    const uint64_t scale = TimecodeScale();
    if (points.empty() || scale == 0 || !cue.IsOrdered()) return points.size();
    if (points.back().CueTime > UINT64_MAX / scale || timeUs >= UINT64_MAX / 1000) return points.size();
    const uint64_t lastUnits = (timeUs * 1000 + 999) / scale;  // that are not behind `timeUs`
    return CountUpTo(lastUnits, points.size(), [&](size_t i) { return points[i].CueTime; });
}

}  // namespace MatroskaExtReader
