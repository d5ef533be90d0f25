#include "matroska/BlockCursor.h"

namespace android {

using MatroskaExtReader::BlockRun;
using MatroskaExtReader::CMatroskaFile;
using MatroskaExtReader::CMatroskaNode;

bool BlockCursor::MoveToFirst(CMatroskaFile* file, CMatroskaNode* cluster) {
    mRun = file->Blocks.First(cluster);
    mIndex = 0;
    const bool hasBlock = mRun->Reach(0);
    mMetFailure = mRun->IsDoubtful();  // a run that was found is sound
    if (hasBlock) return true;
    cluster->KnowOpenEnd(mRun->WalkEnd());
    Clear();
    return false;
}

bool BlockCursor::MoveToNext(CMatroskaFile* file, CMatroskaNode* cluster) {
    if (mRun->HasSound(mIndex + 1)) {
        ++mIndex;
        return true;
    }
    if (mRun->IsDoubtful() && !mMetFailure && !Renew(file, cluster)) return false;
    const bool hasNext = mRun->Reach(mIndex + 1);
    mMetFailure = mRun->IsDoubtful();
    if (hasNext) {
        ++mIndex;
        return true;
    }
    sp<BlockRun> after;
    if (mRun->IsFull()) {
        after = file->Blocks.After(*mRun);
        if (after->Reach(0)) {
            mRun = after;
            mIndex = 0;
            mMetFailure = mRun->IsDoubtful();
            return true;
        }
    }
    cluster->KnowOpenEnd(after != nullptr ? after->WalkEnd() : mRun->WalkEnd());
    return false;
}

// Stands on the same block of a run that is walked anew, since another iterator met a failure in this one.
// False when the block cannot be found again: then this one has met a failure too.
bool BlockCursor::Renew(CMatroskaFile* file, CMatroskaNode* cluster) {
    const uint64_t position = Head().header.dataPosition;
    const sp<BlockRun> run = file->Blocks.Renewed(*mRun, cluster);
    if (!run->Reach(mIndex) || run->At(mIndex).header.dataPosition != position) return false;
    mRun = run;
    return true;
}

}  // namespace android
