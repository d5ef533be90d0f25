#define LOG_TAG "MediaBuffer"

#include <media/stagefright/MediaBuffer.h>

#include <stdint.h>

#include <host/AllocationLimit.h>
#include <media/stagefright/MetaData.h>
#include <media/stagefright/foundation/ABuffer.h>
#include <media/stagefright/foundation/ADebug.h>
#include <ui/GraphicBuffer.h>

#include "BufferStock.h"

namespace android {

namespace {

std::atomic<size_t> gAllocationLimit{SIZE_MAX};

void* allocateData(size_t size) {
    return size > gAllocationLimit.load(std::memory_order_relaxed) ? nullptr : TakeBytes(size);
}

}  // namespace

namespace host {

void SetMediaBufferAllocationLimit(size_t bytes) {
    gAllocationLimit.store(bytes, std::memory_order_relaxed);
}
void ClearMediaBufferAllocationLimit() {
    SetMediaBufferAllocationLimit(SIZE_MAX);
}
size_t MediaBufferAllocationLimit() {
    return gAllocationLimit.load(std::memory_order_relaxed);
}

}  // namespace host

MediaBuffer::MediaBuffer(void* data, size_t size)
    : mObserver(nullptr),
      mRefCount(0),
      mData(data),
      mSize(size),
      mRangeOffset(0),
      mRangeLength(size),
      mOwnsData(false),
      mMetaData(TakeMetaData()),
      mOriginal(nullptr) {}

MediaBuffer::MediaBuffer(size_t size) : MediaBuffer(allocateData(size), size) {
    mOwnsData = true;
}

MediaBuffer::MediaBuffer(const sp<ABuffer>& buffer) : MediaBuffer(buffer->data(), buffer->size()) {
    mBuffer = buffer;
}

MediaBuffer::MediaBuffer(const sp<GraphicBuffer>& graphicBuffer) : MediaBuffer(nullptr, 1) {
    mGraphicBuffer = graphicBuffer;
}

// Objects of derived classes are larger and have no part in the stock.
void* MediaBuffer::operator new(size_t size) {
    return size == sizeof(MediaBuffer) ? TakeShell(size) : ::operator new(size);
}

void MediaBuffer::operator delete(void* memory, size_t size) {
    size == sizeof(MediaBuffer) ? ReturnShell(memory) : ::operator delete(memory);
}

MediaBuffer::~MediaBuffer() {
    CHECK(mObserver == NULL);
    if (mOwnsData && mData != nullptr) ReturnBytes(mData, mSize);
    if (mOriginal != nullptr) mOriginal->release();
    ReturnMetaData(mMetaData);
}

void MediaBuffer::release() {
    if (mObserver == nullptr) {
        CHECK_EQ(mRefCount.load(std::memory_order_acquire), 0);
        delete this;
        return;
    }
    const int before = mRefCount.fetch_sub(1, std::memory_order_acq_rel);
    // From the call on, the buffer may be in use again or gone.
    if (before == 1) mObserver->signalBufferReturned(this);
    CHECK(before > 0);
}

void MediaBuffer::add_ref() {
    mRefCount.fetch_add(1, std::memory_order_relaxed);
}

int MediaBuffer::refcount() const {
    return mRefCount.load(std::memory_order_acquire);
}

void* MediaBuffer::data() const {
    CHECK(mGraphicBuffer == NULL);
    return mData;
}

size_t MediaBuffer::size() const {
    CHECK(mGraphicBuffer == NULL);
    return mSize;
}

void MediaBuffer::set_range(size_t offset, size_t length) {
    if (mGraphicBuffer == nullptr && offset + length > mSize) {
        ALOGE("range of %zu bytes at %zu in a buffer of %zu", length, offset, mSize);
    }
    CHECK((mGraphicBuffer != NULL) || (offset + length <= mSize));
    mRangeOffset = offset;
    mRangeLength = length;
}

sp<MetaData> MediaBuffer::meta_data() {
    return mMetaData;
}

void MediaBuffer::reset() {
    mMetaData->clear();
    set_range(0, mSize);
}

void MediaBuffer::setObserver(MediaBufferObserver* observer) {
    CHECK(observer == NULL || mObserver == NULL);
    mObserver = observer;
}

MediaBuffer* MediaBuffer::clone() {
    CHECK(mGraphicBuffer == NULL);
    MediaBuffer* copy = new MediaBuffer(mData, mSize);
    ReturnMetaData(copy->mMetaData);
    copy->mMetaData = new MetaData(*mMetaData);
    copy->mMetaData->incStrong(nullptr);
    add_ref();
    copy->mOriginal = this;
    return copy;
}

}  // namespace android
