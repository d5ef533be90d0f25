#include "MetaDataPool.h"

#include <stddef.h>

#include <atomic>

#if defined(__has_feature)
#define POOL_HAS_FEATURE(name) __has_feature(name)
#else
#define POOL_HAS_FEATURE(name) 0
#endif

namespace android {

namespace {

#if defined(__SANITIZE_ADDRESS__) || POOL_HAS_FEATURE(address_sanitizer)
constexpr bool kPooling = false;
#else
constexpr bool kPooling = true;
#endif

constexpr size_t kMaxPooled = 64;

// Needs no construction and no destruction: buffers may come before and stay behind every other static
// object. Each object in it has one strong reference, which is the pool's.
struct Pool {
    std::atomic_flag busy = ATOMIC_FLAG_INIT;
    size_t count = 0;
    MetaData* items[kMaxPooled] = {};

    bool tryLock() { return !busy.test_and_set(std::memory_order_acquire); }
    void unlock() { busy.clear(std::memory_order_release); }
};

Pool gPool;

// Whether the caller's reference is the only one, and everything that former holders did to the object has
// happened. Every strong reference holds a weak one too, so counting those is enough.
bool isSoleReference(const MetaData* metaData) {
    if (metaData->getWeakRefs()->getWeakCount() != 1) return false;
#if !defined(__SANITIZE_THREAD__) && !POOL_HAS_FEATURE(thread_sanitizer)  // which cannot follow fences
    std::atomic_thread_fence(std::memory_order_acquire);
#endif
    return true;
}

bool putIntoPool(MetaData* metaData) {
    if (!gPool.tryLock()) return false;
    const bool room = gPool.count < kMaxPooled;
    if (room) gPool.items[gPool.count++] = metaData;
    gPool.unlock();
    return room;
}

}  // namespace

MetaData* TakeMetaData() {
    MetaData* taken = nullptr;
    if (kPooling && gPool.tryLock()) {
        if (gPool.count > 0) taken = gPool.items[--gPool.count];
        gPool.unlock();
    }
    if (taken == nullptr) {
        taken = new MetaData;
        taken->incStrong(nullptr);
    }
    return taken;
}

void ReturnMetaData(MetaData* metaData) {
    if (kPooling && isSoleReference(metaData)) {
        metaData->clear();
        if (putIntoPool(metaData)) return;
    }
    metaData->decStrong(nullptr);
}

}  // namespace android
