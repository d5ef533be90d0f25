// The sync index: the times of a file's cue points, ascending, with the Clusters that they name.
//
// The points of Cues as muxers write them are in that order, and are the index as they stand. Of others a
// list is made and sorted.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "matroska/reader/CheckedMath.h"
#include "matroska/reader/Limits.h"
#include "matroska/reader/MatroskaElements.h"

namespace MatroskaExtReader {

class CMatroskaFile;

// The Clusters of a Segment as a walk comes by them, each with its first Timecode: the cue points of a file
// without Cues, but for their track. The positions count from the data start of the Segment that was parsed
// last.
class ClusterScan {
  public:
    explicit ClusterScan(CMatroskaFile* file);

    // Takes the Cluster in, unless there are too many. Of unknown size it may learn where it ends. The file's
    // position is left behind its header, from where further SeekHeads are looked for.
    void Add(CMatroskaNode* cluster);
    bool IsFull() const { return mPoints->Points.size() >= limit::kCuePoints; }
    // Neither a read failed nor was anything lost since the scan began, and it is not full.
    bool IsSound() const;
    const AutoPtr<Cue>& Points() const { return mPoints; }

  private:
    CMatroskaFile* mFile;
    uint64_t mTrouble;
    AutoPtr<CMatroskaNode> mChild;
    AutoPtr<Cue> mPoints;
};

// One entry.
struct IndexItem {
    int64_t Time;       // microseconds
    uint64_t Position;  // of a Cluster, in bytes from the Segment's data start
};

class SyncIndex {
  public:
    // Of all points that name a place. Their times count in units of `scale` nanoseconds. False, and without
    // an entry, where memory is refused. The points must not change from then on.
    bool Build(const CNode<Cue>& cues, uint64_t scale);

    size_t size() const { return mOrdered != nullptr ? mOrdered->Points.size() : mSorted.size(); }
    IndexItem operator[](size_t i) const {
        return mOrdered != nullptr ? ItemOf(*mOrdered, mOrdered->Points[i]) : mSorted[i];
    }

  private:
    bool IsOrdered(const CNode<Cue>& cues) const;
    bool Sort(const CNode<Cue>& cues);
    IndexItem ItemOf(const Cue& cue, const CuePoint& point) const {
        const uint64_t time = MultiplyWrappingDivide(point.CueTime, mScale, 1000);
        return {static_cast<int64_t>(time), cue.PositionsOf(point)[0].CueClusterPosition};
    }

    uint64_t mScale = 0;
    AutoPtr<Cue> mOrdered;     // whose points are the index
    Array<IndexItem> mSorted;  // else
};

}  // namespace MatroskaExtReader
