#include "BufferStock.h"

#include <pthread.h>
#include <stdlib.h>

#include <new>

#if defined(__has_feature)
#define STOCK_HAS_FEATURE(name) __has_feature(name)
#else
#define STOCK_HAS_FEATURE(name) 0
#endif

namespace android {

namespace {

#if defined(__SANITIZE_ADDRESS__) || STOCK_HAS_FEATURE(address_sanitizer)
constexpr bool kStocking = false;
#else
constexpr bool kStocking = true;
#endif

constexpr size_t kMostKept = 64;

// A small unit takes a place of the lesser of these sizes that holds it.
constexpr size_t kSmall = 256, kMiddle = 2048;

template <typename T>
struct Shelf {
    size_t count;
    T* items[kMostKept];

    T* take() { return count > 0 ? items[--count] : nullptr; }
    bool put(T* item) {
        if (count == kMostKept) return false;
        items[count++] = item;
        return true;
    }
};

// All zeros at first, which is an empty stock: needs no construction, so taking needs no check whether there
// was one.
struct Stock {
    bool isOpen;               // its end has been arranged for
    Shelf<MetaData> metaData;  // each with one strong reference, which is the stock's
    Shelf<void> shells;
    Shelf<void> small;   // kSmall bytes each
    Shelf<void> middle;  // kMiddle bytes each
};

// The library is loaded with the program, so the cheap kind of thread-local access is open to it.
__attribute__((tls_model("initial-exec"))) __thread Stock tStock;

pthread_key_t gEnd;
pthread_once_t gEndOnce = PTHREAD_ONCE_INIT;

void emptyStock(void*) {
    while (MetaData* metaData = tStock.metaData.take()) metaData->decStrong(nullptr);
    while (void* shell = tStock.shells.take()) ::operator delete(shell);
    while (void* bytes = tStock.small.take()) free(bytes);
    while (void* bytes = tStock.middle.take()) free(bytes);
    tStock.isOpen = false;  // what comes back later in the thread's end opens it again
}

bool openStock() {
    pthread_once(&gEndOnce, [] { pthread_key_create(&gEnd, emptyStock); });
    tStock.isOpen = pthread_setspecific(gEnd, &tStock) == 0;
    return tStock.isOpen;
}

bool isStockOpen() {
    return kStocking && (tStock.isOpen || openStock());
}

void* takeFrom(Shelf<void>& shelf, size_t size) {
    void* taken = shelf.take();
    return taken != nullptr ? taken : malloc(size);
}

}  // namespace

MetaData* TakeMetaData() {
    if (MetaData* taken = tStock.metaData.take()) return taken;
    MetaData* made = new MetaData;
    made->incStrong(nullptr);
    return made;
}

void ReturnMetaData(MetaData* metaData) {
    if (isStockOpen() && metaData->isHeldOnce()) {
        metaData->clear();
        if (tStock.metaData.put(metaData)) return;
    }
    metaData->decStrong(nullptr);
}

void* TakeShell(size_t size) {
    void* taken = tStock.shells.take();
    return taken != nullptr ? taken : ::operator new(size);
}

void ReturnShell(void* shell) {
    if (!isStockOpen() || !tStock.shells.put(shell)) ::operator delete(shell);
}

void* TakeBytes(size_t size) {
    if (kStocking && size <= kSmall) return takeFrom(tStock.small, kSmall);
    if (kStocking && size <= kMiddle) return takeFrom(tStock.middle, kMiddle);
    return malloc(size);
}

void ReturnBytes(void* bytes, size_t size) {
    const bool isKept =
        size <= kMiddle && isStockOpen() && (size <= kSmall ? tStock.small : tStock.middle).put(bytes);
    if (!isKept) free(bytes);
}

}  // namespace android
