#define LOG_TAG "ABuffer"

#include <media/stagefright/foundation/ABuffer.h>

#include <stdlib.h>
#include <string.h>

#include <media/stagefright/foundation/ADebug.h>
#include <media/stagefright/foundation/AMessage.h>

namespace android {

ABuffer::ABuffer(size_t capacity) : ABuffer(malloc(capacity), capacity) {
    mOwnsData = true;
}

ABuffer::ABuffer(void* data, size_t capacity)
    : mData(data),
      mCapacity(capacity),
      mRangeOffset(0),
      mRangeLength(capacity),
      mInt32Data(0),
      mOwnsData(false) {}

ABuffer::~ABuffer() {
    if (mOwnsData) free(mData);
    if (mFarewell != NULL) mFarewell->post();
}

sp<ABuffer> ABuffer::CreateAsCopy(const void* data, size_t capacity) {
    sp<ABuffer> copy = new ABuffer(capacity);
    if (copy->base() == NULL) return NULL;
    if (capacity > 0) memcpy(copy->base(), data, capacity);
    return copy;
}

void ABuffer::setRange(size_t offset, size_t size) {
    CHECK_LE(offset, mCapacity);
    CHECK_LE(size, mCapacity - offset);
    mRangeOffset = offset;
    mRangeLength = size;
}

sp<AMessage> ABuffer::meta() {
    if (mMeta == NULL) mMeta = new AMessage;
    return mMeta;
}

void ABuffer::setFarewellMessage(const sp<AMessage>& message) {
    mFarewell = message;
}

}  // namespace android
