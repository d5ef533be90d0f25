// The master track's iterator queues the subtitle events that it passes, and merges consecutive events of one
// SSA/ASS track.
#include <media/stagefright/MediaBuffer.h>
#include <media/stagefright/MediaErrors.h>
#include <media/stagefright/MetaData.h>

#include "matroska/MatroskaExtExtractor.h"
#include "matroska/MatroskaExtIterator.h"
#include "matroska/MetaDataKeys.h"
#include "matroska/SubtitleMerge.h"

namespace android {

using namespace MatroskaExtReader;

namespace {

// An event does not grow further than this: each merge copies all that was merged before.
constexpr size_t kMostMergedBytes = 64u << 10;

// An event begins where its buffer does: nothing is stripped off it.
const uint8_t* BytesOf(const MediaBuffer* buffer) {
    return static_cast<const uint8_t*>(buffer->data());
}

}  // namespace

// Queues the event in the block that the walk stands on, which is one of track `trackNumber`, if that has
// subtitles. ERROR_END_OF_STREAM when it cannot be read.
int MatroskaExtIterator::collectSubtitles(unsigned int trackNumber) {
    if (!CollectsSubtitles()) return 0;
    const TrackEntry* track = mFile->FindTrack(trackNumber);
    if (track == nullptr || track->SubtitleType == kSubtitleNone) return 0;
    BlockGroup group;
    mBlock.Head().Fill(group);
    MediaBuffer* buffer = ReadBlock(group, track);
    if (buffer == nullptr) return ERROR_END_OF_STREAM;
    if (MergeWithLast(buffer, group, trackNumber)) return 0;
    if (!mFile->Subtitles.Append(buffer, trackNumber)) {
        mFile->Losses.Add(LossKind::kRefusedAllocation, group.Block.DataPosition, group.Block.DataSize);
        return ERROR_END_OF_STREAM;
    }
    mLastSubtitleTrack = trackNumber;
    return 0;
}

// True when the event went into one record with the one before it; `buffer` is released then.
bool MatroskaExtIterator::MergeWithLast(MediaBuffer* buffer, const BlockGroup& group,
                                        unsigned int trackNumber) {
    if (mLastSubtitleTrack != static_cast<int64_t>(trackNumber) || mFile->Subtitles.IsEmpty()) return false;
    MediaBuffer* last = mFile->Subtitles.Last().mBuffer;
    const bool isDecidedOff = mSubtitleMergeDecided && !mSubtitleMergeEnabled;
    const uint8_t* lastText = BytesOf(last);
    const size_t lastSize = last->range_length();
    const ssize_t comma =
        isDecidedOff ? 0 : FindEighthComma(reinterpret_cast<const char*>(lastText), lastSize);
    if (!mSubtitleMergeDecided && !DecideMerging(comma)) return false;
    if (comma <= 0 || !mSubtitleMergeEnabled) return false;

    const size_t textAt = static_cast<size_t>(comma);
    const size_t newSize = buffer->range_length();
    if (MergedSize(newSize, lastSize, textAt) > kMostMergedBytes) return false;
    MediaBuffer* merged = new MediaBuffer(MergedSize(newSize, lastSize, textAt));
    if (merged->data() == nullptr) {  // without memory the events stay apart
        merged->release();
        return false;
    }
    int64_t startUs = 0;
    (void)last->meta_data()->findInt64(kKeyTime, &startUs);
    merged->meta_data()->setInt64(kKeyTime, startUs);
    merged->meta_data()->setInt32(kKeyIsSyncFrame, group.IsKeyFrame() ? 1 : 0);
    merged->meta_data()->setInt64(kKeySubtitleEnd, EndTimeUs(group));
    MergeEvents(static_cast<uint8_t*>(merged->data()), BytesOf(buffer), newSize, lastText, lastSize, textAt);
    buffer->release();
    mFile->Subtitles.DropLast();
    (void)mFile->Subtitles.Append(merged, static_cast<uint32_t>(mLastSubtitleTrack));  // in the place left
    return true;
}

// Deliberate: decided once an iterator, by a count of subtitle tracks that stays 0, so that in this system
// merging stays on. With one such track the two texts are compared over no bytes at all, which finds them
// equal and switches merging off. False when this event is not to be merged.
bool MatroskaExtIterator::DecideMerging(ssize_t comma) {
    const uint32_t subtitleTracks = mExtractor->SubtitleCount();
    if (subtitleTracks >= 2) {
        mSubtitleMergeDecided = true;
    } else if (subtitleTracks == 1) {
        if (comma == 0) return false;
        mSubtitleMergeEnabled = false;
        mSubtitleMergeDecided = true;
    }
    return true;
}

}  // namespace android
