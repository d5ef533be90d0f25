// Subtitle events on their way from the master track's iterator to the subtitle sources, for the whole file,
// oldest first. Guarded by the extractor's lock, which the caller holds: the queue is a part of the file and
// not of the extractor, because whoever may use it holds the file, and iterators know the file alone.
//
// A queue that nobody drains keeps at most kMaxRecords records and kMaxBytes bytes; the oldest go first.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "matroska/reader/Array.h"

namespace android {

class MediaBuffer;

}  // namespace android

namespace MatroskaExtReader {

struct SubtitleInfo {
    android::MediaBuffer* mBuffer;  // owned: released with the record unless handed out
    uint32_t mTrackNumber;          // Matroska TrackNumber of the subtitle track
};

class SubtitleQueue {
  public:
    static constexpr size_t kMaxRecords = 8192;
    static constexpr size_t kMaxBytes = 32u << 20;

    SubtitleQueue() : mBytes(0) {}
    ~SubtitleQueue() { Clear(); }
    SubtitleQueue(const SubtitleQueue&) = delete;
    SubtitleQueue& operator=(const SubtitleQueue&) = delete;

    bool IsEmpty() const { return Count() == 0; }
    size_t Count() const { return mRecords.size() - mTaken; }
    // Takes the buffer over. False where memory is refused: then it is released.
    bool Append(android::MediaBuffer* buffer, uint32_t trackNumber);
    // The newest record; the queue must not be empty.
    const SubtitleInfo& Last() const { return mRecords.back(); }
    // Releases the newest record.
    void DropLast();
    // The oldest record of `trackNumber`, handed to the caller; records of other tracks in front of it are
    // released. Null when there is none, and then the queue is empty.
    android::MediaBuffer* TakeFor(uint32_t trackNumber);
    // Releases every record.
    void Clear();

  private:
    const SubtitleInfo& First() const { return mRecords[mTaken]; }
    void PassFirst();
    void DropFirst();

    Array<SubtitleInfo> mRecords;
    size_t mTaken = 0;  // so many in front are gone already
    size_t mBytes;
};

}  // namespace MatroskaExtReader
