#include "matroska/reader/BlockRuns.h"

#include <algorithm>

#include "matroska/reader/MatroskaReader.h"

namespace MatroskaExtReader {

using android::sp;

namespace {

// Positions of neighbouring Clusters spread over the sets (Fibonacci hashing).
size_t SetOf(uint64_t key) {
    static_assert(BlockRunCache::kRuns / BlockRunCache::kWays == 16, "the shift keeps four bits");
    return static_cast<size_t>((key * 0x9E3779B97F4A7C15u) >> 60);
}

}  // namespace

void BlockRun::Restart(uint64_t key, bool isFirst) {
    mKey = key;
    mIsFirst = isFirst;
    mHasEnded = false;
    mIsCut = false;
    mIsDoubtful = false;
    mSmallBlocks = 0;
    mIsOnNewBlock = false;
    mHasTimecode = false;
    mClusterTimecode = 0;
    mWalkEnd = 0;
    mHeads.clear();
    mReached = 0;
}

void BlockRun::BeginCluster(CMatroskaNode* cluster) {
    const uint64_t failures = cluster->File()->FailedReads();
    FindFirstBlock(cluster);
    if (cluster->File()->FailedReads() != failures) mIsDoubtful = true;
}

void BlockRun::FindFirstBlock(CMatroskaNode* cluster) {
    mWalkEnd = cluster->DataStart();
    if (mTail == nullptr) mTail = new CMatroskaNode(cluster->File());
    bool isInside = mTail->MoveToFirstChildOf(cluster);
    if (!isInside) {
        mHasEnded = true;
        return;
    }
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

// What failed in the run before has no part in this one. (The Timecode is asked of a Cluster's first run.)
void BlockRun::Continue(const BlockRun& before) {
    mTail = before.mTail->Copy();
    mIsOnNewBlock = before.mIsOnNewBlock;
    mSmallBlocks = before.mSmallBlocks;
}

void BlockRun::StandAgain(const CMatroskaNode* cluster) {
    cluster->File()->SeekTo(mKey);
    mTail = new CMatroskaNode(cluster);
    if (mTail->IsValid()) return;
    mIsDoubtful = true;
    Finish();
}

void BlockRun::TakeTimecode(CMatroskaNode* node) {
    CUInt value;
    (void)value.Parse(node);
    mHasTimecode = true;
    mClusterTimecode = value.Get();
}

bool BlockRun::Walk(size_t index) {
    CMatroskaFile* file = mTail->File();
    const CMatroskaFile::Heads heads(file);
    bool hasMore = true;
    while (hasMore && mHeads.size() <= index && !mHasEnded && !IsFull()) {  // bounded by kBlocks
        const uint64_t failures = file->FailedReads();
        hasMore = TakeStretch() || TakeNextBlock();
        if (file->FailedReads() != failures) mIsDoubtful = true;
    }
    NoteReached(std::min(index + 1, mHeads.size()));
    return index < mHeads.size();
}

// Where blocks are small: takes those behind the last one whose headers a stretch of the Cluster holds in
// their usual form. False when there is none.
bool BlockRun::TakeStretch() {
    CMatroskaFile* file = mTail->File();
    if (mIsOnNewBlock || mSmallBlocks < file->Blocks.SmallBlocksBeforeStretch()) return false;
    HeldBytes bytes = file->HoldStretch(mTail->End(), mTail->EnclosingEnd());
    const uint32_t size = bytes.size;
    ElementHeader element;
    BlockHead head;
    size_t taken = 0;
    while (mHeads.size() < kBlocks) {
        const uint32_t headerSize = TakePlainBlock(bytes, &element, &head);
        if (headerSize == 0 || !Append(head)) break;
        ++taken;
        mTail->StandOn(element, bytes.position, bytes.position + headerSize);
        const uint32_t behind = bytes.size - headerSize;
        if (element.size > behind) break;
        bytes = bytes.Behind(headerSize + static_cast<uint32_t>(element.size));
    }
    if (size != 0) file->Blocks.NoteStretch(size, bytes.size);
    return taken != 0;
}

bool BlockRun::TakeNextBlock() {
    for (;;) {  // bounded: every step moves forward
        if (!mIsOnNewBlock && !mTail->NextBlock()) {
            Finish();
            return false;
        }
        mIsOnNewBlock = false;
        if (TakeBlock()) return true;
        if (mIsCut) return false;
    }
}

bool BlockRun::TakeBlock() {
    CMatroskaFile* file = mTail->File();
    if (mTail->Id() == id::kSimpleBlock) {
        const BlockHeader header = ReadBlockHeader(*file, mTail->DataStart(), mTail->PayloadEnd());
        BlockHead head = BlockHead::OfSimpleBlock(header);
        head.LookAtLacing(file->HeldFrom(header.dataPosition));
        return Keep(head);
    }
    mScratch.Reset();
    if (Failed(mScratch.Parse(mTail.get()))) return false;
    return Keep(BlockHead::Of(mScratch));
}

// Without memory the run ends here, for everybody but those who go on behind it.
bool BlockRun::Keep(const BlockHead& head) {
    if (Append(head)) return true;
    mTail->File()->Losses.Add(LossKind::kRefusedAllocation, mTail->HeaderStart(), 0);
    mIsCut = mIsOnNewBlock = mIsDoubtful = true;
    return false;
}

void BlockRun::Finish() {
    mHasEnded = true;
    mWalkEnd = mTail->WalkEnd();
}

sp<BlockRun> BlockRunCache::First(CMatroskaNode* cluster) {
    bool isNew;
    const sp<BlockRun>& run = Slot(cluster->HeaderStart(), true, &isNew);
    if (isNew) run->BeginCluster(cluster);
    return run;
}

void BlockRunCache::Clear() {
    for (sp<BlockRun>& run : mRuns) run.clear();
}

sp<BlockRun> BlockRunCache::After(const BlockRun& before) {
    if (before.mIsCut) {  // its end is no place that a key tells
        const sp<BlockRun> run = new BlockRun;
        run->Restart(0, false);
        run->Continue(before);
        return run;
    }
    bool isNew;
    const sp<BlockRun>& run = Slot(before.mTail->HeaderStart(), false, &isNew);
    if (isNew) run->Continue(before);
    return run;
}

sp<BlockRun> BlockRunCache::Renewed(const BlockRun& doubtful, CMatroskaNode* cluster) {
    bool isNew;
    const sp<BlockRun>& run = Slot(doubtful.mKey, doubtful.mIsFirst, &isNew);
    if (isNew && doubtful.mIsFirst) run->BeginCluster(cluster);
    if (isNew && !doubtful.mIsFirst) run->StandAgain(cluster);
    return run;
}

const sp<BlockRun>& BlockRunCache::Slot(uint64_t key, bool isFirst, bool* isNew) {
    sp<BlockRun>* const set = &mRuns[SetOf(key) * kWays];
    sp<BlockRun>* place = set;
    *isNew = true;
    for (sp<BlockRun>* run = set; run != set + kWays; ++run) {
        if (*run == nullptr) {  // the places behind it are free too
            place = run;
            break;
        }
        if ((*run)->mKey == key && (*run)->mIsFirst == isFirst && !(*run)->mIsDoubtful) {
            place = run;
            *isNew = false;
            break;
        }
        if ((*run)->mLastUse < (*place)->mLastUse) place = run;
    }
    if (*isNew) {
        if (*place == nullptr || (*place)->getStrongCount() != 1)
            *place = new BlockRun;  // an iterator may stand in the old one
        (*place)->Restart(key, isFirst);
    }
    (*place)->mLastUse = ++mClock;
    return *place;
}

}  // namespace MatroskaExtReader
