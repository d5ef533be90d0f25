#include "matroska/reader/SubtitleQueue.h"

#include <utils/Errors.h>
#include <utils/String8.h>
#include <media/stagefright/MediaBuffer.h>

namespace MatroskaExtReader {

using android::MediaBuffer;

bool SubtitleQueue::Append(MediaBuffer* buffer, uint32_t trackNumber) {
    if (!mRecords.Append(SubtitleInfo{buffer, trackNumber})) {
        buffer->release();
        return false;
    }
    mBytes += buffer->size();
    while (Count() > kMaxRecords || (mBytes > kMaxBytes && Count() > 1)) DropFirst();
    return true;
}

// Moves what is left to the front now and then, so that a record is moved about once.
void SubtitleQueue::PassFirst() {
    mBytes -= First().mBuffer->size();
    if (2 * ++mTaken < mRecords.size()) return;
    mRecords.PopFront(mTaken);
    mTaken = 0;
}

void SubtitleQueue::DropFirst() {
    MediaBuffer* buffer = First().mBuffer;
    PassFirst();
    buffer->release();
}

void SubtitleQueue::DropLast() {
    mBytes -= mRecords.back().mBuffer->size();
    mRecords.back().mBuffer->release();
    mRecords.PopBack();
}

MediaBuffer* SubtitleQueue::TakeFor(uint32_t trackNumber) {
    while (!IsEmpty()) {
        if (First().mTrackNumber == trackNumber) {
            MediaBuffer* buffer = First().mBuffer;
            PassFirst();
            return buffer;
        }
        // Deliberate: what belongs to another subtitle track is not kept for that track's source.
        DropFirst();
    }
    return nullptr;
}

void SubtitleQueue::Clear() {
    while (!IsEmpty()) DropFirst();
}

}  // namespace MatroskaExtReader
