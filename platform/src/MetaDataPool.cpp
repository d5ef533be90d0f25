#include "MetaDataPool.h"

#include <stddef.h>

#include <atomic>
#include <utility>

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

struct Pool {
    std::atomic_flag busy = ATOMIC_FLAG_INIT;
    size_t count = 0;
    sp<MetaData> items[kMaxPooled];

    bool tryLock() { return !busy.test_and_set(std::memory_order_acquire); }
    void unlock() { busy.clear(std::memory_order_release); }
};

// Never destroyed: buffers may outlive this library's static objects.
Pool& pool() {
    static Pool& instance = *new Pool;
    return instance;
}

// Whether `metaData` is the only reference, and everything that former holders did to the object has
// happened.
bool isSoleReference(const sp<MetaData>& metaData) {
    if (metaData->getStrongCount() != 1 || metaData->getWeakRefs()->getWeakCount() != 1) return false;
#if !defined(__SANITIZE_THREAD__) && !POOL_HAS_FEATURE(thread_sanitizer)  // which cannot follow fences
    std::atomic_thread_fence(std::memory_order_acquire);
#endif
    return true;
}

}  // namespace

sp<MetaData> TakeMetaData() {
    Pool& stock = pool();
    sp<MetaData> taken;
    if (kPooling && stock.tryLock()) {
        if (stock.count > 0) taken = std::move(stock.items[--stock.count]);
        stock.unlock();
    }
    return taken != nullptr ? taken : sp<MetaData>(new MetaData);
}

void ReturnMetaData(sp<MetaData> metaData) {
    if (!kPooling || !isSoleReference(metaData)) return;
    metaData->clear();
    Pool& stock = pool();
    if (!stock.tryLock()) return;
    if (stock.count < kMaxPooled) stock.items[stock.count++] = std::move(metaData);
    stock.unlock();
}

}  // namespace android
