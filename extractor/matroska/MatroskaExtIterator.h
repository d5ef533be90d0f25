// Walks the Clusters of one file in order and hands out the frames of one track, one at a time, each in a
// fresh MediaBuffer with its time in microseconds and its sync flag.
//
// All iterators of a file share its one read position, its block runs and its subtitle queue: the caller
// holds the extractor's lock. An iterator owns its place in the file and nothing else; the file outlives it.
// It must be positioned with reset() before it reads; until then, and behind the end, reading gives end of
// stream.
#pragma once

#include <utils/Errors.h>
#include <utils/String8.h>
#include <media/stagefright/MediaSource.h>

#include <stdint.h>

#include <memory>
#include <vector>

#include "matroska/BlockCursor.h"
#include "matroska/reader/MatroskaReader.h"

namespace android {

class MatroskaExtExtractor;
class MediaBuffer;
class MetaData;

class MatroskaExtIterator {
  public:
    // The block whose payload begins at `stripBlockPos` is delivered without its first `stripSize` bytes.
    // Without an `extractor` the iterator is a temporary one: it collects no subtitles.
    MatroskaExtIterator(MatroskaExtReader::CMatroskaFile* file, long long stripBlockPos,
                        unsigned int stripSize, unsigned int trackNumber, MatroskaExtExtractor* extractor);
    MatroskaExtIterator(const MatroskaExtIterator&) = delete;
    MatroskaExtIterator& operator=(const MatroskaExtIterator&) = delete;

    // Lets go of what it shares with other iterators, before it is destroyed without the lock. As behind the
    // end afterwards.
    void Release();
    // Back to before the first Cluster's first block.
    void reset();
    // Brings at least one block of this track into the pending list; false at the end of the Segment.
    bool advance();
    // The next frame, after a seek or a late skip that `options` may ask for. OK with `*out` owned by the
    // caller, or ERROR_END_OF_STREAM with `*out` null: at the end, or for a block that cannot be read (the
    // next call goes on behind it; AtEnd tells the two apart).
    status_t read(MediaBuffer** out, const MediaSource::ReadOptions* options);
    bool AtEnd() const { return mEOS && mPendingBlocks.empty(); }
    // Where in the file the payload begins of the block that read() took last; 0 before the first.
    uint64_t LastPosition() const { return mLastPosition; }

    // ---- seeking (microseconds; positions are relative to the Segment's data start) ----
    // To the first key frame of this track in the latest cued Cluster at or before `timeUs`; without usable
    // Cues to the start of the file; at or behind the duration to the end of stream.
    void seekToTime(long long timeUs);
    // To the first block of this track in the Cluster at `clusterPosition` whose time is not before `timeUs`.
    void seekToPosition(long long clusterPosition, long long timeUs);
    // The time of the largest of the first key frames; 0 when there is none. Leaves the iterator anywhere.
    long long findThumbnailTimeUs();

    // ---- looking into the first frames; each starts and ends with reset() ----
    // A track format from the first access unit that begins with a sequence parameter set and holds a picture
    // parameter set too, within the first 50 blocks; null when there is none.
    sp<MetaData> getH264ExtraInfo();
    // The track's first frame in an array that the caller frees with delete[]; `length` of its bytes are
    // configuration, `blockPos` is where the block's payload begins. Null, and both 0, when there is no
    // frame.
    unsigned char* getM4vExtraInfo(long long& blockPos, unsigned int& length);
    // The bytes in front of the first picture of the first frame, 200 at the most; empty when it cannot be
    // read.
    std::vector<uint8_t> getMpeg4Headers();
    // From the first frame's A/52 header; all 0 when there is none.
    void getAC3Info(int& frameSize, int& sampleRate, int& bitRate);
    // What an A/52 frame's header says; its length, or 0. As the free function of that name.
    int a52_syncinfo(unsigned char* buf, int* flags, int* sampleRate, int* bitRate);
    // Deliberate: reads the first frame and says nothing of it; all three are 0.
    void getDTSInfo(int& a, int& b, int& c);

  private:
    typedef MatroskaExtReader::BlockGroup BlockGroup;
    enum class Examined { kFound, kGoOn, kAbandon };
    // Where the walk stands, without what is pending.
    struct Place {
        sp<MatroskaExtReader::CMatroskaNode> cluster;
        BlockCursor block;
        MatroskaExtReader::CUInt timecode;
        bool isAtEnd;
    };

    void ForgetPlace();

    // block walk
    bool StepToNextBlock();  // whose it may be
    bool StepToOwnBlock();
    bool StepFromFront();
    bool StepToFirstOwnBlock();
    bool AdvanceByOne();
    bool EnterCluster();
    bool IsOwn(const MatroskaExtReader::BlockHead& head) const {
        return head.header.trackNumber == mTrackNumber;
    }
    void PassForeignBlock();
    bool AppendPending(const MatroskaExtReader::BlockHead& head);
    void PopPending();
    void ClearPending();
    bool HasPending();
    Place CurrentPlace() const;
    void StandAt(const Place& place);
    // Of a block that is `timeCode` away from its Cluster's Timecode.
    long long BlockTimeUs(int64_t timeCode) const;
    long long BlockTimeUs(const BlockGroup& group) const { return BlockTimeUs(group.Block.TimeCode.Get()); }
    long long EndTimeUs(const BlockGroup& group) const;
    MatroskaExtReader::CMatroskaNode* AnyNode() const { return mFile->SegmentNode(); }

    // reading
    void ServeSeek(long long timeUs);
    void SkipWhenLate(long long lateByUs);
    void JumpTo(const MatroskaExtReader::IndexItem& entry);
    bool OwnBlockFollows();
    void MoveIndexCursor(long long timeUs);
    status_t ReadStraight(MediaBuffer** out);
    status_t ReadFrames(const MatroskaExtReader::BlockHead& head, MediaBuffer** out);
    status_t ReadPending(MediaBuffer** out);
    MediaBuffer* NewBuffer(uint64_t position, uint32_t size, long long timeUs, bool isSync);
    void StripFront(MediaBuffer* buffer, size_t length) const;
    // The frame of `group` in a new buffer with its metadata and range set; null when it cannot be read.
    MediaBuffer* ReadBlock(BlockGroup& group, const MatroskaExtReader::TrackEntry* track);

    // seeking
    bool OpenCluster(uint64_t clusterPosition);
    uint64_t SeekWork() const;
    template <typename Examine>
    Examined ScanCluster(Examine examine);
    bool TryCuePoint(const MatroskaExtReader::Cue& cue, const MatroskaExtReader::CuePoint& point,
                     long long timeUs, int64_t* lastTried);

    // subtitles
    bool CollectsSubtitles() const { return mExtractor != nullptr && mTrackNumber == mFile->MasterTrack(); }
    int collectSubtitles(unsigned int trackNumber);
    bool MergeWithLast(MediaBuffer* buffer, const BlockGroup& group, unsigned int trackNumber);
    bool DecideMerging(ssize_t comma);

    // inspection
    struct InspectedFrame {
        std::unique_ptr<uint8_t[]> bytes;
        uint32_t capacity = 0;
        uint32_t size = 0;
    };
    bool InspectFrontFrame(InspectedFrame* frame);
    bool InspectFirstFrame(InspectedFrame* frame, long long* blockPos);

    MatroskaExtReader::CMatroskaFile* mFile;  // not owned
    sp<MatroskaExtReader::CMatroskaNode> mCluster;
    BlockCursor mBlock;  // not valid before the Cluster's first block was taken
    // Holds the Timecode only: that of the last Cluster entered which had one.
    MatroskaExtReader::AutoPtr<MatroskaExtReader::Cluster> mClusterInfo;
    MatroskaExtReader::Array<std::unique_ptr<BlockGroup>>
        mPendingBlocks;                       // not fully delivered yet, front first
    std::unique_ptr<BlockGroup> mSpareBlock;  // for reuse
    bool mEOS;
    bool mIsInFront = false;       // nothing was read since reset()
    uint64_t mTroubleInFront = 0;  // the file's, before it
    int64_t mStripBlockPos;
    uint32_t mStripSize;
    uint32_t mTrackNumber;
    const MatroskaExtReader::TrackEntry* mTrack;  // null for a number that the file does not know
    bool mIsPlain;                                // the track's blocks are delivered as they are stored
    uint32_t mIndexCursor;                        // into the file's sync index, for late-frame skipping
    uint64_t mLastPosition = 0;
    uint64_t mScannedBlocks = 0;  // by seeks, as a measure of their work
    uint64_t mMostSeekWork = 0;   // where the seek that runs gives up
    int64_t mLastSubtitleTrack;   // TrackNumber of the last record queued; -1 before
    bool mSubtitleMergeDecided;
    bool mSubtitleMergeEnabled;
    MatroskaExtExtractor* mExtractor;  // not owned; null for a temporary iterator
};

}  // namespace android
