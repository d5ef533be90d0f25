// ABuffer: a reference-counted block of bytes with a valid range in it.
//
// Sizes and offsets are bytes. Built from a size it owns uninitialised memory (not checked: base() is null
// when the allocation failed); built from a pointer it only wraps memory that must outlive it. Not
// thread-safe.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

#include <utils/RefBase.h>

#include <media/stagefright/foundation/ABase.h>

namespace android {

struct AMessage;

struct ABuffer : public RefBase {
    ABuffer(size_t capacity);  // NOLINT(implicit): the platform's own shape
    ABuffer(void* data, size_t capacity);
    // Newer platforms only.
    static sp<ABuffer> CreateAsCopy(const void* data, size_t capacity);

    uint8_t* base() { return static_cast<uint8_t*>(mData); }
    uint8_t* data() { return static_cast<uint8_t*>(mData) + mRangeOffset; }
    size_t capacity() const { return mCapacity; }
    size_t size() const { return mRangeLength; }
    size_t offset() const { return mRangeOffset; }

    // Aborts when the range does not lie within the capacity.
    void setRange(size_t offset, size_t size);

    // An integer that the block carries along, for its user's own purposes; 0 at first.
    void setInt32Data(int32_t value) { mInt32Data = value; }
    int32_t int32Data() const { return mInt32Data; }

    // Made by the first call, this buffer's own.
    sp<AMessage> meta();
    // Posted by the destructor.
    void setFarewellMessage(const sp<AMessage>& message);

  protected:
    ~ABuffer() override;

  private:
    sp<AMessage> mFarewell;
    sp<AMessage> mMeta;
    void* mData;  // owned when mOwnsData (malloc)
    size_t mCapacity;
    size_t mRangeOffset;
    size_t mRangeLength;
    int32_t mInt32Data;
    bool mOwnsData;

    DISALLOW_EVIL_CONSTRUCTORS(ABuffer);
};

}  // namespace android
