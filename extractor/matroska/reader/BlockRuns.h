// The block headers of Clusters, parsed once and shared by all iterators of a file.
//
// A BlockRun is a stretch of up to kBlocks consecutive blocks of one Cluster, in file order, filled only as
// far as somebody has walked. The cache keeps the runs that were used last; an iterator keeps its own alive.
// So a file whose tracks are read side by side pays for each header once, not once a track, and what is kept
// is bounded: kRuns runs of kBlocks heads of 56 bytes, plus one run an iterator. A run that fell out of the
// cache is walked again.
//
// A failed read makes a run doubtful: the source may yet deliver what it refused. Whoever met the failure
// goes on with what was found, anybody else takes the run anew (see Renewed) before going beyond its sound
// blocks.
#pragma once

#include <utils/RefBase.h>

#include <stdint.h>

#include "matroska/reader/Array.h"
#include "matroska/reader/BlockHead.h"
#include "matroska/reader/LockedRefBase.h"
#include "matroska/reader/MatroskaElements.h"
#include "matroska/reader/Node.h"

namespace MatroskaExtReader {

class CMatroskaFile;

// What a run is known by.
struct RunKey {
    uint64_t start;  // header start of the Cluster, or of the last block of the run before
    bool isFirst;    // of its Cluster
};

class BlockRun : public LockedRefBase<BlockRun> {
  public:
    static constexpr size_t kBlocks = 128;

    // Makes block `index` known. False when the Cluster has no such block behind the ones before it.
    bool Reach(size_t index) { return index < mReached || (!HasReachedEnd() && Walk(index)); }
    const BlockHead& At(size_t index) const { return mHeads[index]; }
    // Moves `index` to the next block of `track`, as far as the blocks are known already; without one to the
    // last that is known.
    bool FindKnown(uint64_t track, size_t* index) {
        const size_t sound = mIsDoubtful ? 0 : mHeads.size();
        size_t i = *index + 1;
        while (i < sound && mHeads[i].header.trackNumber != track) ++i;
        const bool isFound = i < sound;
        *index = isFound ? i : i - 1;
        NoteReached(*index + 1);
        return isFound;
    }
    bool IsFull() const { return mHeads.size() == kBlocks || mIsCut; }
    bool IsDoubtful() const { return mIsDoubtful; }
    // Block `index` was reached, and no read has failed in the run.
    bool HasSound(size_t index) const { return index < mReached && !mIsDoubtful; }

    // Of a Cluster's first run: the Cluster has a Timecode child, and its value in timecode units. Known once
    // block 0 was reached.
    bool HasTimecode() const { return mHasTimecode; }
    uint64_t ClusterTimecode() const { return mClusterTimecode; }
    // Where the walk found the Cluster to end. Meaningful once Reach has answered false on a run that is not
    // full.
    uint64_t WalkEnd() const { return mWalkEnd; }

  private:
    friend class BlockRunCache;

    // Where blocks are no larger, their headers are read together.
    static constexpr uint64_t kSmallBlock = 400;

    void Restart(const RunKey& key);
    void BeginCluster(CMatroskaNode* cluster);
    bool TakeFront(const CMatroskaNode* cluster);
    void FindFirstBlock(CMatroskaNode* cluster);
    void Continue(const BlockRun& before);
    void StandAgain(const CMatroskaNode* cluster);
    void TakeTimecode(CMatroskaNode* node);
    bool Walk(size_t index);
    bool TakeStretch();
    bool TakeNextBlock();
    bool TakeBlock();
    bool Keep(const BlockHead& head);
    bool HasReachedEnd() const { return mHasEnded && mReached == mHeads.size(); }
    bool Append(const BlockHead& head) {
        mSmallBlocks = head.header.dataSize <= kSmallBlock ? mSmallBlocks + 1 : 0;
        return mHeads.Append(head);
    }
    // What a stretch spared counts as work where somebody reaches it, as if it was read only then.
    void NoteReached(size_t count);
    void Finish();

    RunKey mKey = {0, false};
    bool mHasEnded = false;
    bool mIsCut = false;  // for want of memory it ends in front of the block that mTail stands on
    bool mIsDoubtful = false;
    size_t mReached = 0;         // of the known blocks, those that somebody asked for
    uint32_t mSmallBlocks = 0;   // how many small ones came last
    bool mIsOnNewBlock = false;  // mTail stands on a block that was not taken yet
    bool mHasTimecode = false;
    uint64_t mClusterTimecode = 0;
    uint64_t mWalkEnd = 0;
    android::sp<CMatroskaNode> mTail;  // the element that the walk stands on
    BlockGroup mScratch;
    Array<BlockHead> mHeads;
};

class BlockRunCache {
  public:
    static constexpr size_t kRuns = 64;
    // A key has this many places, so that runs which are in use side by side do not drive each other out.
    static constexpr size_t kWays = 4;

    // The first run of the Cluster at `cluster`.
    android::sp<BlockRun> First(CMatroskaNode* cluster);
    // The run behind `run`, which must be full.
    android::sp<BlockRun> After(const BlockRun& run);
    // The same stretch of `cluster` as the doubtful `run`, walked anew.
    android::sp<BlockRun> Renewed(const BlockRun& run, CMatroskaNode* cluster);
    // Forgets every run; iterators keep theirs.
    void Clear();

    // Blocks that stand behind so many small ones are worth a look at a stretch of their Cluster.
    uint32_t SmallBlocksBeforeStretch() const { return mHasPaid ? 1 : 4; }
    // Of `size` bytes so many were of no use.
    void NoteStretch(uint32_t size, uint32_t unused) { mHasPaid = unused <= size / 2; }

  private:
    struct Place {
        RunKey key;
        uint64_t lastUse;  // by the clock
        android::sp<BlockRun> run;
    };

    // The run with this key, or one made anew in the place that was used least recently, which says so.
    const android::sp<BlockRun>& Find(const RunKey& key, bool* isNew);

    Place mPlaces[kRuns] = {};  // kWays neighbours are one set
    uint64_t mClock = 0;        // counts look-ups
    bool mHasPaid = true;       // most of the last stretch was of use
};

}  // namespace MatroskaExtReader
