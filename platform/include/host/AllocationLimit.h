// A test's hook into MediaBuffer(size_t): a device with little memory, on a host with plenty.
#pragma once

#include <stddef.h>

namespace android {
namespace host {

// From now on every MediaBuffer of more than `bytes` bytes gets no data block (data() is null), in all
// threads. Off at first.
void SetMediaBufferAllocationLimit(size_t bytes);
void ClearMediaBufferAllocationLimit();
// SIZE_MAX while off.
size_t MediaBufferAllocationLimit();

// A limit for the length of a scope.
class ScopedAllocationLimit {
  public:
    explicit ScopedAllocationLimit(size_t bytes) : mBefore(MediaBufferAllocationLimit()) {
        SetMediaBufferAllocationLimit(bytes);
    }
    ~ScopedAllocationLimit() { SetMediaBufferAllocationLimit(mBefore); }
    ScopedAllocationLimit(const ScopedAllocationLimit&) = delete;
    ScopedAllocationLimit& operator=(const ScopedAllocationLimit&) = delete;

  private:
    size_t mBefore;
};

}  // namespace host
}  // namespace android
