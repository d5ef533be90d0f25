#include "matroska/BlockCursor.h"

namespace android {

using MatroskaExtReader::BlockRun;
using MatroskaExtReader::CMatroskaFile;
using MatroskaExtReader::CMatroskaNode;

bool BlockCursor::MoveToFirst(CMatroskaFile* file, CMatroskaNode* cluster) {
    mRun = file->Blocks.First(cluster);
    mIndex = 0;
    if (mRun->Reach(0)) return true;
    if (cluster->HasUnknownSize()) cluster->KnowOpenEnd(mRun->WalkEnd());
    Clear();
    return false;
}

bool BlockCursor::MoveToNext(CMatroskaFile* file, CMatroskaNode* cluster) {
    if (mRun->Reach(mIndex + 1)) {
        ++mIndex;
        return true;
    }
    sp<BlockRun> last = mRun;
    if (mRun->IsFull()) {
        last = file->Blocks.After(*mRun);
        if (last->Reach(0)) {
            mRun = last;
            mIndex = 0;
            return true;
        }
    }
    if (cluster->HasUnknownSize()) cluster->KnowOpenEnd(last->WalkEnd());
    return false;
}

}  // namespace android
