// The block walk and the delivery of frames.
#define LOG_TAG "MatroskaExtExtractor"
#include "matroska/MatroskaExtIterator.h"

#include <android/log.h>
#include <media/stagefright/MediaBuffer.h>
#include <media/stagefright/MediaErrors.h>
#include <media/stagefright/MetaData.h>

#include <algorithm>
#include <new>

#include "matroska/MetaDataKeys.h"
#include "matroska/reader/OrderedSearch.h"

namespace android {

using namespace MatroskaExtReader;

namespace {

// A frame later than this may be skipped, to a sync point that is not further ahead than the slack allows.
constexpr long long kTolerableLatenessUs = 400000;
constexpr long long kSyncPointSlackUs = 100000;

long long AddTimes(long long a, long long b) {
    return static_cast<long long>(AddWrapping(static_cast<uint64_t>(a), static_cast<uint64_t>(b)));
}

// What is delivered is what is stored, with nothing added to it.
bool IsPlain(const TrackEntry* track) {
    return track == nullptr ||
           (!track->IsDecoded() && track->StrippedHeaderBytes == 0 && track->SubtitleType == kSubtitleNone);
}

}  // namespace

MatroskaExtIterator::MatroskaExtIterator(CMatroskaFile* file, long long stripBlockPos, unsigned int stripSize,
                                         unsigned int trackNumber, MatroskaExtExtractor* extractor)
    : mFile(file),
      mClusterInfo(new Cluster),
      mEOS(false),
      mStripBlockPos(stripBlockPos),
      mStripSize(stripSize),
      mTrackNumber(trackNumber),
      mTrack(file->FindTrack(trackNumber)),
      mIsPlain(IsPlain(mTrack)),
      mIndexCursor(0),
      mLastSubtitleTrack(-1),
      mSubtitleMergeDecided(false),
      mSubtitleMergeEnabled(true),
      mExtractor(extractor) {}

void MatroskaExtIterator::reset() {
    ForgetPlace();
    mIsInFront = true;
    mTroubleInFront = mFile->Trouble();
    mCluster = mFile->FirstCluster();
}

void MatroskaExtIterator::Release() {
    ForgetPlace();
    mEOS = true;
}

void MatroskaExtIterator::ForgetPlace() {
    mCluster.clear();
    mBlock.Clear();
    ClearPending();
    mEOS = false;
    mIsInFront = false;
}

// ---- block walk
// --------------------------------------------------------------------------------------------------

bool MatroskaExtIterator::advance() {
    if (!mPendingBlocks.empty()) return AdvanceByOne();
    while (StepToOwnBlock()) {  // bounded: every step moves forward in the file
        if (AppendPending(mBlock.Head())) return true;
    }
    return false;
}

// With a block pending already each step counts, whoever has walked here before.
bool MatroskaExtIterator::AdvanceByOne() {
    if (!StepToNextBlock()) {
        mEOS = true;
        return false;
    }
    if (IsOwn(mBlock.Head())) {
        (void)AppendPending(mBlock.Head());
    } else {
        PassForeignBlock();
    }
    return true;
}

// False at the end of the Segment, which it notes.
bool MatroskaExtIterator::StepToOwnBlock() {
    if (mIsInFront) return StepFromFront();
    const bool wantsOthers = CollectsSubtitles();
    for (;;) {  // bounded: every step moves forward in the file
        if (!wantsOthers && mBlock.IsValid() && mBlock.MoveToKnown(mTrackNumber)) return true;
        if (!StepToNextBlock()) break;
        if (IsOwn(mBlock.Head())) return true;
        PassForeignBlock();
    }
    mEOS = true;
    return false;
}

// The same from the front of the file, where a track without blocks is spared the way once that is known.
bool MatroskaExtIterator::StepFromFront() {
    mIsInFront = false;
    const bool passesOthers = !CollectsSubtitles();
    if (passesOthers && !mFile->KnowsTracksOfBlocks()) return StepToFirstOwnBlock();
    if (passesOthers && mFile->HasNoBlockOf(mTrack)) mCluster.clear();
    return StepToOwnBlock();
}

// With a note of the tracks that blocks belong to: who meets none of its own spares all other tracks without
// blocks the way.
bool MatroskaExtIterator::StepToFirstOwnBlock() {
    while (StepToNextBlock()) {  // bounded: every step moves forward in the file
        if (IsOwn(mBlock.Head())) return true;
        mFile->NoteBlockOf(mBlock.Head().header.trackNumber);
    }
    mFile->NoteAllBlocksMet(mTroubleInFront);
    mEOS = true;
    return false;
}

bool MatroskaExtIterator::StepToNextBlock() {
    if (mCluster == nullptr || !mCluster->IsValid()) return false;
    const CMatroskaFile::Heads heads(mFile);
    if (mBlock.IsValid() ? mBlock.MoveToNext(mFile, mCluster.get()) : EnterCluster()) return true;
    mBlock.Clear();
    // Whether the Segment goes on is judged by this iterator's own Cluster, never by the shared read
    // position.
    if (mFile->MoveToNextCluster(mCluster.get(), [this] { return EnterCluster(); })) return true;
    mCluster.clear();
    return false;
}

// Takes up the Cluster's first block, and its Timecode where it has one.
bool MatroskaExtIterator::EnterCluster() {
    if (!mBlock.MoveToFirst(mFile, mCluster.get())) return false;
    if (mBlock.HasTimecode()) mClusterInfo->Timecode.Set(mBlock.ClusterTimecode());
    return true;
}

// The master track's iterator queues what belongs to a subtitle track; anything else is passed over.
void MatroskaExtIterator::PassForeignBlock() {
    // Deliberate: a foreign number is cut to 32 bits. An event that cannot be read is dropped.
    (void)collectSubtitles(static_cast<unsigned int>(mBlock.Head().header.trackNumber));
}

// False, with a loss, where memory is refused.
bool MatroskaExtIterator::AppendPending(const BlockHead& head) {
    if (mSpareBlock == nullptr) mSpareBlock.reset(new (std::nothrow) BlockGroup);
    if (mSpareBlock != nullptr) head.Fill(*mSpareBlock);
    if (mSpareBlock != nullptr && mPendingBlocks.Append(std::move(mSpareBlock))) return true;
    mFile->Losses.Add(LossKind::kRefusedAllocation, head.header.dataPosition, head.header.dataSize);
    return false;
}

void MatroskaExtIterator::PopPending() {
    mSpareBlock = std::move(mPendingBlocks.front());
    mPendingBlocks.PopFront();
}

void MatroskaExtIterator::ClearPending() {
    while (!mPendingBlocks.empty()) PopPending();
}

bool MatroskaExtIterator::HasPending() {
    return !mPendingBlocks.empty() || (!mEOS && advance());
}

long long MatroskaExtIterator::BlockTimeUs(int64_t timeCode) const {
    const uint64_t units = AddWrapping(static_cast<uint64_t>(timeCode), mClusterInfo->Timecode.Get());
    return static_cast<long long>(mFile->ToMicroseconds(units));
}

long long MatroskaExtIterator::EndTimeUs(const BlockGroup& group) const {
    const uint64_t duration = mFile->ToMicroseconds(group.BlockDuration.Get());
    return AddTimes(BlockTimeUs(group), static_cast<long long>(duration));
}

// ---- reading
// -----------------------------------------------------------------------------------------------------

status_t MatroskaExtIterator::read(MediaBuffer** out, const MediaSource::ReadOptions* options) {
    *out = nullptr;
    long long lateByUs = 0;
    if (options != nullptr) {
        int64_t seekTimeUs;
        MediaSource::ReadOptions::SeekMode mode;
        if (options->getSeekTo(&seekTimeUs, &mode)) ServeSeek(seekTimeUs);
        lateByUs = options->getLateBy();
    }
    if (mIsPlain && mPendingBlocks.empty() && lateByUs <= kTolerableLatenessUs) return ReadStraight(out);
    if (!HasPending()) return ERROR_END_OF_STREAM;
    SkipWhenLate(lateByUs);
    return ReadPending(out);
}

// The usual case of read(): nothing is pending, nobody is late, and the next block is stored as it is
// delivered, so that it goes from the run of headers into a buffer.
status_t MatroskaExtIterator::ReadStraight(MediaBuffer** out) {
    if (mEOS || !StepToOwnBlock()) return ERROR_END_OF_STREAM;
    const BlockHead& head = mBlock.Head();
    if (head.knowsFrames) return ReadFrames(head, out);
    if (!AppendPending(head) && !advance()) return ERROR_END_OF_STREAM;
    SkipWhenLate(0);
    return ReadPending(out);
}

status_t MatroskaExtIterator::ReadFrames(const BlockHead& head, MediaBuffer** out) {
    const BlockHeader& block = head.header;
    const long long timeUs = BlockTimeUs(block.timeCode);
    MoveIndexCursor(timeUs);
    mLastPosition = block.dataPosition;
    if (!block.IsDeliverable(*mFile)) {
        mFile->Losses.Add(LossKind::kBeyondSource, block.dataPosition, block.dataSize);
        return ERROR_END_OF_STREAM;
    }
    const uint32_t size = static_cast<uint32_t>(block.dataSize);
    MediaBuffer* buffer = NewBuffer(block.dataPosition, size, timeUs, !head.hasReference);
    if (buffer == nullptr) return ERROR_END_OF_STREAM;
    const uint32_t length = static_cast<uint32_t>(head.FramesSize());
    mFile->SeekTo(head.FramesPosition());
    if (Failed(mFile->Read(static_cast<uint8_t*>(buffer->data()), length))) {
        buffer->release();
        return ERROR_END_OF_STREAM;
    }
    if (length != size) buffer->set_range(0, length);
    if (static_cast<int64_t>(block.dataPosition) == mStripBlockPos) StripFront(buffer, length);
    *out = buffer;
    return OK;
}

// A buffer of `size` bytes with its time and sync flag, for the block whose payload is at `position`. Null,
// with a loss, where memory is refused.
MediaBuffer* MatroskaExtIterator::NewBuffer(uint64_t position, uint32_t size, long long timeUs, bool isSync) {
    MediaBuffer* buffer = new MediaBuffer(size);
    if (buffer->data() == nullptr && size != 0) {  // which the buffer does not say
        mFile->Losses.Add(LossKind::kRefusedAllocation, position, size);
        buffer->release();
        return nullptr;
    }
    const sp<MetaData> meta = buffer->meta_data();
    meta->setInt32(kKeyIsSyncFrame, isSync ? 1 : 0);  // the lower key first: the other goes behind it
    meta->setInt64(kKeyTime, timeUs);
    return buffer;
}

void MatroskaExtIterator::StripFront(MediaBuffer* buffer, size_t length) const {
    const size_t offset = std::min<size_t>(mStripSize, length);
    buffer->set_range(offset, length - offset);
}

void MatroskaExtIterator::MoveIndexCursor(long long timeUs) {
    const SyncIndex& index = mFile->Index();
    if (mIndexCursor < index.size() && index[mIndexCursor].Time < timeUs) ++mIndexCursor;
}

// Seeks, and sets the index cursor on the first entry behind the target.
void MatroskaExtIterator::ServeSeek(long long timeUs) {
    seekToTime(timeUs);
    const SyncIndex& index = mFile->Index();
    mIndexCursor = static_cast<uint32_t>(
        CountUpTo<int64_t>(timeUs, index.size(), [&](size_t i) { return index[i].Time; }));
}

// Moves the index cursor along, and when the consumer is late jumps to the sync point there. At most one jump
// a read.
void MatroskaExtIterator::SkipWhenLate(long long lateByUs) {
    const SyncIndex& index = mFile->Index();
    while (mIndexCursor < index.size()) {  // bounded: a second round has no lateness
        const long long timeUs = BlockTimeUs(*mPendingBlocks.front());
        MoveIndexCursor(timeUs);
        if (lateByUs <= kTolerableLatenessUs || mIndexCursor >= index.size()) break;
        const IndexItem entry = index[mIndexCursor];
        __android_log_print(ANDROID_LOG_WARN, LOG_TAG,
                            "something wrong? iLate = %lld, timeUs = %lld, curIndexTime = %lld", lateByUs,
                            timeUs, static_cast<long long>(entry.Time));
        if (AddTimes(AddTimes(lateByUs, timeUs), kSyncPointSlackUs) < entry.Time) break;
        JumpTo(entry);
        lateByUs = 0;
        ++mIndexCursor;
    }
}

// Stays where it is when no block of this track follows there.
void MatroskaExtIterator::JumpTo(const IndexItem& entry) {
    const Place before = CurrentPlace();
    Array<std::unique_ptr<BlockGroup>> pending;
    pending.swap(mPendingBlocks);
    seekToPosition(static_cast<long long>(entry.Position), entry.Time);
    if (!mPendingBlocks.empty() || (OwnBlockFollows() && advance())) return;
    StandAt(before);
    mPendingBlocks.swap(pending);
}

// Looks ahead before anything is queued on the way.
bool MatroskaExtIterator::OwnBlockFollows() {
    const Place here = CurrentPlace();
    bool isFound = false;
    while (!isFound && StepToNextBlock()) isFound = IsOwn(mBlock.Head());
    StandAt(here);
    return isFound;
}

MatroskaExtIterator::Place MatroskaExtIterator::CurrentPlace() const {
    return Place{mCluster != nullptr ? mCluster->Copy() : nullptr, mBlock, mClusterInfo->Timecode, mEOS};
}

void MatroskaExtIterator::StandAt(const Place& place) {
    mCluster = place.cluster;
    mBlock = place.block;
    mClusterInfo->Timecode = place.timecode;
    mEOS = place.isAtEnd;
}

status_t MatroskaExtIterator::ReadPending(MediaBuffer** out) {
    BlockGroup& group = *mPendingBlocks.front();
    mLastPosition = group.Block.DataPosition;
    MediaBuffer* buffer = ReadBlock(group, mTrack);
    const bool isVorbis = mTrack != nullptr && mTrack->IsVorbis;
    if (!isVorbis || group.Block.DecodedFrames.empty()) PopPending();
    if (buffer == nullptr) return ERROR_END_OF_STREAM;
    *out = buffer;
    return OK;
}

MediaBuffer* MatroskaExtIterator::ReadBlock(BlockGroup& group, const TrackEntry* track) {
    const uint32_t size = group.Block.GetSize(AnyNode(), track);
    if (group.Block.IsRefused()) return nullptr;
    MediaBuffer* buffer = NewBuffer(group.Block.DataPosition, size, BlockTimeUs(group), group.IsKeyFrame());
    if (buffer == nullptr) {
        group.Block.DropFrame();
        return nullptr;
    }
    if (track != nullptr && track->SubtitleType != kSubtitleNone) {
        buffer->meta_data()->setInt64(kKeySubtitleEnd, EndTimeUs(group));
    }
    long sizeRead = static_cast<long>(size);
    const Result result = group.Block.Read(AnyNode(), track, static_cast<uint8_t*>(buffer->data()), sizeRead,
                                           static_cast<uint32_t>(mClusterInfo->Timecode.Get()));
    if (Failed(result)) {  // here the reader's results become the framework's
        buffer->release();
        return nullptr;
    }
    const size_t length = static_cast<size_t>(sizeRead);
    buffer->set_range(0, length);
    if (static_cast<int64_t>(group.Block.DataPosition) == mStripBlockPos) StripFront(buffer, length);
    return buffer;
}

}  // namespace android
