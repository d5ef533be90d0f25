#include "matroska/reader/BlockRuns.h"

#include <algorithm>

#include "matroska/reader/MatroskaReader.h"

namespace MatroskaExtReader {

using android::sp;

BlockHead BlockHead::Of(const BlockGroup& group) {
    const SimpleBlock& block = group.Block;
    BlockHead head;
    head.trackNumber = block.TrackNumber.Get();
    head.dataPosition = block.DataPosition;
    head.dataSize = block.DataSize;
    head.duration = group.BlockDuration.Get();
    head.reference = group.ReferenceBlock.Get();
    head.timeCode = static_cast<int16_t>(block.TimeCode.Get());
    head.flags = block.Flags.Get();
    head.hasReference = group.ReferenceBlock.IsSet();
    head.hasDuration = group.BlockDuration.IsSet();
    return head;
}

void BlockHead::Fill(BlockGroup& group) const {
    group.Reset();
    group.Block.TrackNumber.Set(trackNumber);
    group.Block.TimeCode.Set(timeCode);
    group.Block.Flags.Set(flags);
    group.Block.DataPosition = dataPosition;
    group.Block.DataSize = dataSize;
    if (hasReference) group.ReferenceBlock.Set(reference);
    if (hasDuration) group.BlockDuration.Set(duration);
}

void BlockRun::Restart(uint64_t key, bool isFirst) {
    mKey = key;
    mIsFirst = isFirst;
    mHasEnded = false;
    mIsOnNewBlock = false;
    mHasTimecode = false;
    mClusterTimecode = 0;
    mWalkEnd = 0;
    mTail.clear();
    mHeads.clear();
}

void BlockRun::BeginCluster(CMatroskaNode* cluster) {
    mWalkEnd = cluster->DataStart();
    mTail = cluster->Child(0, true);
    bool isInside = mTail != nullptr;
    while (isInside && !mTail->IsBlockElement()) {  // bounded: every step moves forward
        if (mTail->Id() == id::kClusterTimecode && !mHasTimecode) TakeTimecode(mTail.get());
        isInside = mTail->Next(false);
    }
    mIsOnNewBlock = isInside;
    if (!isInside) {
        Finish();
    } else if (!mHasTimecode) {  // its usual place is in front of the blocks, but it may stand anywhere
        const sp<CMatroskaNode> child = cluster->Child(id::kClusterTimecode, true);
        if (child != nullptr) TakeTimecode(child.get());
    }
}

void BlockRun::Continue(const BlockRun& before) {
    mHasTimecode = before.mHasTimecode;
    mClusterTimecode = before.mClusterTimecode;
    mTail = before.mTail->Copy();
}

void BlockRun::TakeTimecode(CMatroskaNode* node) {
    CUInt value;
    (void)value.Parse(node);
    mHasTimecode = true;
    mClusterTimecode = value.Get();
}

bool BlockRun::Reach(size_t index) {
    while (mHeads.size() <= index) {  // bounded by kBlocks
        if (mHasEnded || IsFull() || !TakeNextBlock()) return false;
    }
    return true;
}

bool BlockRun::TakeNextBlock() {
    for (;;) {  // bounded: every step moves forward
        if (!mIsOnNewBlock && !mTail->NextBlock()) {
            Finish();
            return false;
        }
        mIsOnNewBlock = false;
        if (TakeBlock()) return true;
    }
}

bool BlockRun::TakeBlock() {
    if (mScratch == nullptr) mScratch = new BlockGroup;
    mScratch->Reset();
    if (mTail->Id() == id::kBlockGroup) {
        if (Failed(mScratch->Parse(mTail.get()))) return false;
    } else {
        (void)mScratch->Block.Parse(mTail.get());
        // From here on the key-frame bit of a SimpleBlock speaks as the absence of a reference does in a
        // group.
        if (!mScratch->Block.IsKeyFrameFlagged()) mScratch->ReferenceBlock.Set(0);
    }
    mHeads.push_back(BlockHead::Of(*mScratch));
    return true;
}

void BlockRun::Finish() {
    mHasEnded = true;
    if (mTail == nullptr) return;
    const bool isChild = mTail->IsValid() && !IsLevelOne(mTail->Id());
    mWalkEnd = isChild ? mTail->End() : mTail->HeaderStart();
}

sp<BlockRun> BlockRunCache::First(CMatroskaNode* cluster) {
    sp<BlockRun> run = Find(cluster->HeaderStart(), true);
    if (run == nullptr) {
        run = Make(cluster->HeaderStart(), true);
        run->BeginCluster(cluster);
    }
    return run;
}

sp<BlockRun> BlockRunCache::After(const BlockRun& before) {
    const uint64_t key = before.mTail->HeaderStart();
    sp<BlockRun> run = Find(key, false);
    if (run == nullptr) {
        run = Make(key, false);
        run->Continue(before);
    }
    return run;
}

sp<BlockRun> BlockRunCache::Find(uint64_t key, bool isFirst) {
    for (size_t i = mRuns.size(); i-- > 0;) {
        if (mRuns[i]->mKey != key || mRuns[i]->mIsFirst != isFirst) continue;
        std::rotate(mRuns.begin() + static_cast<ptrdiff_t>(i), mRuns.begin() + static_cast<ptrdiff_t>(i) + 1,
                    mRuns.end());
        return mRuns.back();
    }
    return nullptr;
}

sp<BlockRun> BlockRunCache::Make(uint64_t key, bool isFirst) {
    sp<BlockRun> run;
    if (mRuns.size() >= kRuns) {
        run = mRuns.front();
        mRuns.erase(mRuns.begin());
        if (run->getStrongCount() != 1) run.clear();  // an iterator still stands in it
    }
    if (run == nullptr) run = new BlockRun;
    run->Restart(key, isFirst);
    mRuns.push_back(run);
    return run;
}

}  // namespace MatroskaExtReader
