// A reference count without atomic operations, for objects that android::sp holds and that are only ever
// held, copied and let go with the extractor's lock held.
#pragma once

#include <stdint.h>

namespace MatroskaExtReader {

template <typename T>
class LockedRefBase {
  public:
    void incStrong(const void* /* holder */) const { ++mHolders; }
    void decStrong(const void* /* holder */) const {
        if (--mHolders == 0) delete static_cast<const T*>(this);
    }
    int32_t getStrongCount() const { return mHolders; }

  protected:
    LockedRefBase() {}
    ~LockedRefBase() {}
    LockedRefBase(const LockedRefBase&) = delete;
    LockedRefBase& operator=(const LockedRefBase&) = delete;

  private:
    mutable int32_t mHolders = 0;
};

}  // namespace MatroskaExtReader
