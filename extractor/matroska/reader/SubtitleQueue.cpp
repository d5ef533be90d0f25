#include "matroska/reader/SubtitleQueue.h"

#include <utils/Errors.h>
#include <utils/String8.h>
#include <media/stagefright/MediaBuffer.h>

namespace MatroskaExtReader {

using android::MediaBuffer;

void SubtitleQueue::Append(MediaBuffer* buffer, uint32_t trackNumber) {
    mRecords.push_back(SubtitleInfo{buffer, trackNumber});
    mBytes += buffer->size();
    while (mRecords.size() > kMaxRecords || (mBytes > kMaxBytes && mRecords.size() > 1)) DropFirst();
}

void SubtitleQueue::DropFirst() {
    mBytes -= mRecords.front().mBuffer->size();
    mRecords.front().mBuffer->release();
    mRecords.pop_front();
}

void SubtitleQueue::DropLast() {
    mBytes -= mRecords.back().mBuffer->size();
    mRecords.back().mBuffer->release();
    mRecords.pop_back();
}

MediaBuffer* SubtitleQueue::TakeFor(uint32_t trackNumber) {
    while (!mRecords.empty()) {
        if (mRecords.front().mTrackNumber == trackNumber) {
            MediaBuffer* buffer = mRecords.front().mBuffer;
            mBytes -= buffer->size();
            mRecords.pop_front();
            return buffer;
        }
        // Deliberate: what belongs to another subtitle track is not kept for that track's source.
        DropFirst();
    }
    return nullptr;
}

void SubtitleQueue::Clear() {
    while (!mRecords.empty()) DropFirst();
}

}  // namespace MatroskaExtReader
