// MediaBuffer: one access unit on its way to a decoder, with the metadata that belongs to it.
//
// Not a RefBase. Life without an observer: the count stays 0, and the one release() deletes. Life with an
// observer (a buffer group): add_ref() per user, and the release() that takes the count from 1 to 0 tells the
// observer, which keeps the object. Sizes and offsets are bytes. The count is atomic; everything else belongs
// to one thread at a time.
#pragma once

#include <pthread.h>
#include <stddef.h>
#include <stdint.h>

#include <atomic>

#include <utils/Errors.h>
#include <utils/RefBase.h>

namespace android {

struct ABuffer;
class GraphicBuffer;
class MediaBuffer;
class MetaData;

class MediaBufferObserver {
  public:
    MediaBufferObserver() {}
    virtual ~MediaBufferObserver() {}

    // The last user is gone; the buffer is the observer's again.
    virtual void signalBufferReturned(MediaBuffer* buffer) = 0;

  private:
    MediaBufferObserver(const MediaBufferObserver&);
    MediaBufferObserver& operator=(const MediaBufferObserver&);
};

class MediaBuffer {
  public:
    // Wraps: the bytes stay the caller's.
    MediaBuffer(void* data, size_t size);
    // Owns `size` uninitialised bytes. data() is null when there is no memory for them; nothing else tells.
    explicit MediaBuffer(size_t size);
    // Shares the buffer's current range and keeps a reference.
    explicit MediaBuffer(const sp<ABuffer>& buffer);
    // Size 1, no bytes: data() and size() abort.
    explicit MediaBuffer(const sp<GraphicBuffer>& graphicBuffer);

    // The observer must be null, or the count 1 going to 0, where the comment above says what happens.
    // Anything else is a release too many, and aborts.
    void release();
    void add_ref();
    // 0 at first, not 1.
    int refcount() const;

    // The whole block, whatever the range.
    void* data() const;
    size_t size() const;

    // The valid part; all of it at first.
    size_t range_offset() const { return mRangeOffset; }
    size_t range_length() const { return mRangeLength; }
    // Aborts when the range ends past the block. Deliberate: the end is a plain size_t sum and may wrap.
    void set_range(size_t offset, size_t length);

    const sp<GraphicBuffer>& graphicBuffer() const { return mGraphicBuffer; }

    // This buffer's own, never null.
    sp<MetaData> meta_data();

    // Empties the metadata and widens the range to everything.
    void reset();

    // Aborts when one observer would replace another.
    void setObserver(MediaBufferObserver* observer);

    // Another view of the same bytes, with its own range (everything) and a copy of the metadata. Holds a
    // count of this buffer until it is gone, so this buffer must have an observer.
    MediaBuffer* clone();

    // From a bounded stock of the thread.
    static void* operator new(size_t size);
    static void operator delete(void* memory, size_t size);

  protected:
    virtual ~MediaBuffer();

  private:
    MediaBufferObserver* mObserver;  // not owned
    std::atomic<int> mRefCount;
    void* mData;  // owned when mOwnsData (malloc)
    size_t mSize;
    size_t mRangeOffset;
    size_t mRangeLength;
    sp<GraphicBuffer> mGraphicBuffer;
    sp<ABuffer> mBuffer;
    bool mOwnsData;
    MetaData* mMetaData;     // one strong reference is ours
    MediaBuffer* mOriginal;  // a clone's; one count of it is ours

    MediaBuffer(const MediaBuffer&);
    MediaBuffer& operator=(const MediaBuffer&);
};

}  // namespace android
