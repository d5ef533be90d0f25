// An iterator's place among the blocks of one Cluster, on the runs of block headers that the file shares.
#pragma once

#include <stddef.h>

#include "matroska/reader/MatroskaReader.h"

namespace android {

class BlockCursor {
  public:
    bool IsValid() const { return mRun != nullptr; }
    void Clear() { mRun.clear(); }

    // The Cluster's first block; without one the cursor is not valid afterwards.
    bool MoveToFirst(MatroskaExtReader::CMatroskaFile* file, MatroskaExtReader::CMatroskaNode* cluster);
    // The next block of the Cluster. At its end the cursor stays where it is, and `cluster` learns where it
    // ends.
    bool MoveToNext(MatroskaExtReader::CMatroskaFile* file, MatroskaExtReader::CMatroskaNode* cluster);

    // The next block of `track` among those that somebody has walked over before. Without one it stands on
    // the last of them, and all behind it are to be walked over.
    bool MoveToKnown(uint64_t track) { return mRun->FindKnown(track, &mIndex); }

    const MatroskaExtReader::BlockHead& Head() const { return mRun->At(mIndex); }
    // The Cluster has a Timecode, and its value in timecode units.
    bool HasTimecode() const { return mRun->HasTimecode(); }
    uint64_t ClusterTimecode() const { return mRun->ClusterTimecode(); }

  private:
    bool Renew(MatroskaExtReader::CMatroskaFile* file, MatroskaExtReader::CMatroskaNode* cluster);

    sp<MatroskaExtReader::BlockRun> mRun;
    size_t mIndex = 0;
    bool mMetFailure = false;  // the one that makes mRun doubtful: what was found behind it has to do
};

}  // namespace android
