// Seeking: by the Cues, to a known Cluster, and to a frame that stands for the file.
#include "matroska/MatroskaExtIterator.h"

namespace android {

using namespace MatroskaExtReader;

namespace {

// Deliberate: this counts looks at key frames, not key frames, since every pass looks at all gathered so far.
constexpr uint32_t kMostThumbnailLooks = 19;

}  // namespace

// Stands on the first block of the Cluster at `clusterPosition`; false when there is none to be read. The
// Timecode of a Cluster without blocks counts too: one behind it may have none of its own.
bool MatroskaExtIterator::OpenCluster(uint64_t clusterPosition) {
    mBlock.Clear();
    if (mFile->SegmentNode() == nullptr) return false;
    const CMatroskaFile::Heads heads(mFile);
    mFile->SeekTo(AddWrapping(mFile->Segment.DataStart, clusterPosition));
    mCluster = new CMatroskaNode(mFile->SegmentNode());
    if (!mCluster->IsValid() || mCluster->Id() != id::kCluster) return false;
    if (EnterCluster()) return true;
    (void)mClusterInfo->ParseTimeCode(mCluster.get());
    return false;
}

// Lets `examine` look at each block of this track from the one that the walk stands on to the Cluster's end.
// On kFound that block stays pending; otherwise nothing is. kGoOn: the Cluster has been used up.
template <typename Examine>
MatroskaExtIterator::Examined MatroskaExtIterator::ScanCluster(Examine examine) {
    do {  // bounded by the Cluster
        ++mScannedBlocks;
        if (mBlock.Head().header.trackNumber != mTrackNumber) continue;
        ClearPending();
        if (!AppendPending(mBlock.Head())) continue;
        const Examined examined = examine(*mPendingBlocks.front());
        if (examined == Examined::kFound) return examined;
        ClearPending();
        if (examined == Examined::kAbandon) return examined;
    } while (mBlock.MoveToNext(mFile, mCluster.get()));
    return Examined::kGoOn;
}

uint64_t MatroskaExtIterator::SeekWork() const {
    return mFile->Reads() + mScannedBlocks;
}

void MatroskaExtIterator::seekToTime(long long timeUs) {
    // Deliberate: compared as unsigned numbers, so that a negative target, and without a Duration every
    // target, lies behind the end.
    const uint64_t durationUs = mFile->Segment.GetDuration() / 1000;
    if (static_cast<uint64_t>(timeUs) >= durationUs) {
        ClearPending();
        mEOS = true;
        return;
    }
    if (timeUs <= 0) return reset();
    ForgetPlace();
    int64_t lastTried = -1;
    mMostSeekWork = SeekWork() + limit::kSeekWork;
    for (const AutoPtr<Cue>& cue : mFile->Segment.Cues) {
        for (size_t i = mFile->CountCuePointsUpTo(*cue, static_cast<uint64_t>(timeUs)); i-- > 0;) {
            if (TryCuePoint(*cue, cue->Points[i], timeUs, &lastTried)) return;
        }
    }
    if (SeekWork() >= mMostSeekWork) {
        const uint64_t cluster = AddWrapping(mFile->Segment.DataStart, static_cast<uint64_t>(lastTried));
        mFile->Losses.Add(LossKind::kLimit, cluster, 0);
    }
    // A Cluster that was looked through is left for the next one; in one that was given up reading goes on
    // behind the block that said so.
    if (!mBlock.IsValid()) reset();
}

// True when the seek ends here: a key frame of this track was found in a Cluster that the point names.
bool MatroskaExtIterator::TryCuePoint(const Cue& cue, const CuePoint& point, long long timeUs,
                                      int64_t* lastTried) {
    if (static_cast<uint64_t>(timeUs) < mFile->ToMicroseconds(point.CueTime)) return false;
    const CueTrackPosition* positions = cue.PositionsOf(point);
    for (uint32_t i = 0; i < point.PositionCount; ++i) {
        const int64_t cluster = static_cast<int64_t>(positions[i].CueClusterPosition);
        if (positions[i].CueTrack != mFile->MasterTrack() || cluster == *lastTried) continue;
        if (SeekWork() >= mMostSeekWork) return false;
        if (OpenCluster(positions[i].CueClusterPosition)) {
            const Examined examined = ScanCluster([&](const BlockGroup& group) {
                if (group.IsKeyFrame()) return Examined::kFound;
                return BlockTimeUs(group) <= timeUs ? Examined::kGoOn : Examined::kAbandon;
            });
            if (examined == Examined::kFound) return true;
        }
        *lastTried = cluster;
    }
    return false;
}

void MatroskaExtIterator::seekToPosition(long long clusterPosition, long long timeUs) {
    ForgetPlace();
    if (!OpenCluster(static_cast<uint64_t>(clusterPosition))) return;
    (void)ScanCluster([&](const BlockGroup& group) {
        return BlockTimeUs(group) >= timeUs ? Examined::kFound : Examined::kGoOn;
    });
}

long long MatroskaExtIterator::findThumbnailTimeUs() {
    reset();
    uint32_t looks = 0, bestSize = 0;
    long long bestUs = 0;
    while (!mEOS && looks <= kMostThumbnailLooks && advance()) {  // bounded by the file
        for (const std::unique_ptr<BlockGroup>& group : mPendingBlocks) {
            if (!group->IsKeyFrame()) continue;
            ++looks;
            const uint32_t size = group->Block.GetSize(AnyNode(), mTrack);
            if (size <= bestSize) continue;
            bestSize = size;
            bestUs = BlockTimeUs(*group);
        }
    }
    return bestUs;
}

}  // namespace android
