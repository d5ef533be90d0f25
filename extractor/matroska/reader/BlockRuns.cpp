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

void BlockRun::Restart(const RunKey& key) {
    mKey = key;
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
    if (mTail == nullptr) mTail = new CMatroskaNode(cluster->File());
    if (TakeFront(cluster)) return;
    const uint64_t failures = cluster->File()->FailedReads();
    FindFirstBlock(cluster);
    if (cluster->File()->FailedReads() != failures) mIsDoubtful = true;
}

// The usual Cluster: what it begins with, up to the first block's header, was read with its own header.
bool BlockRun::TakeFront(const CMatroskaNode* cluster) {
    CMatroskaFile* file = cluster->File();
    if (cluster->HasUnknownSize() || file->IsOpening()) return false;
    const uint64_t end = cluster->End();
    const HeldBytes held = file->HeldFrom(cluster->DataStart());
    const uint64_t inside = std::min<uint64_t>(held.size, end - cluster->DataStart());
    unsigned reads = 0;
    PlainBlock block;
    const bool isTaken =
        TakePlainFront(held.Front(static_cast<uint32_t>(inside)), &block, &mClusterTimecode, &reads);
    if (!isTaken || !Append(block.head)) return false;
    mHasTimecode = true;
    mTail->StandOnChildOf(cluster, block.element, block.headerStart, block.dataStart);
    mHasEnded = mTail->End() >= end;
    file->CountReads(reads);
    NoteReached(1);
    return true;
}

void BlockRun::FindFirstBlock(CMatroskaNode* cluster) {
    const UntimedCluster* const untimed = cluster->File()->Untimed.Find(cluster->HeaderStart());
    if (untimed != nullptr && !untimed->hasBlock) {
        mWalkEnd = untimed->end;
        mHasEnded = true;
        return;
    }
    mWalkEnd = cluster->DataStart();
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
    } else if (!mHasTimecode && untimed == nullptr) {  // in front of the blocks is its usual place only
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
    cluster->File()->SeekTo(mKey.start);
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
    const uint64_t begin = mTail->End(), end = mTail->EnclosingEnd();
    if (begin >= end) return false;
    HeldBytes bytes = file->HoldStretch(begin, end);
    const uint32_t size = bytes.size;
    PlainBlock block;
    size_t taken = 0;
    while (mHeads.size() < kBlocks) {
        if (!TakePlainBlock(bytes, &block) || !Append(block.head)) break;
        ++taken;
        mTail->StandOn(block.element, block.headerStart, block.dataStart);
        const uint32_t headerSize = static_cast<uint32_t>(block.dataStart - block.headerStart);
        const uint32_t behind = bytes.size - headerSize;
        if (block.element.size > behind) break;
        bytes = bytes.Behind(headerSize + static_cast<uint32_t>(block.element.size));
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
    const sp<BlockRun>& run = Find({cluster->HeaderStart(), true}, &isNew);
    if (isNew) run->BeginCluster(cluster);
    return run;
}

void BlockRunCache::Clear() {
    for (Place& place : mPlaces) place = Place();
}

sp<BlockRun> BlockRunCache::After(const BlockRun& before) {
    if (before.mIsCut) {  // its end is no place that a key tells
        const sp<BlockRun> run = new BlockRun;
        run->Restart({0, false});
        run->Continue(before);
        return run;
    }
    bool isNew;
    const sp<BlockRun>& run = Find({before.mTail->HeaderStart(), false}, &isNew);
    if (isNew) run->Continue(before);
    return run;
}

sp<BlockRun> BlockRunCache::Renewed(const BlockRun& doubtful, CMatroskaNode* cluster) {
    bool isNew;
    const sp<BlockRun>& run = Find(doubtful.mKey, &isNew);
    if (isNew && doubtful.mKey.isFirst) run->BeginCluster(cluster);
    if (isNew && !doubtful.mKey.isFirst) run->StandAgain(cluster);
    return run;
}

const sp<BlockRun>& BlockRunCache::Find(const RunKey& key, bool* isNew) {
    Place* const set = &mPlaces[SetOf(key.start) * kWays];
    Place* oldest = set;
    *isNew = false;
    for (Place* place = set; place != set + kWays; ++place) {
        const bool isIt = place->key.start == key.start && place->key.isFirst == key.isFirst;
        if (isIt && place->run != nullptr && !place->run->mIsDoubtful) {
            place->lastUse = ++mClock;
            return place->run;
        }
        if (place->lastUse < oldest->lastUse) oldest = place;
    }
    *isNew = true;
    if (oldest->run == nullptr || oldest->run->getStrongCount() != 1)
        oldest->run = new BlockRun;  // an iterator may stand in the old one
    oldest->run->Restart(key);
    oldest->key = key;
    oldest->lastUse = ++mClock;
    return oldest->run;
}

}  // namespace MatroskaExtReader
