// In a plain build this program brings its own malloc family, which counts and hands on to the C library's.
// A sanitizer has replaced the family already and offers hooks instead.
#include "properties/HeapMeter.h"

#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>

#include "properties/Sanitizers.h"

namespace {

std::atomic<long long> gHeld{0};
std::atomic<long long> gPeak{0};
std::atomic<size_t> gMost{SIZE_MAX};  // that malloc gives
std::atomic<long> gLarger{0};         // blocks asked for
std::atomic<long> gRefused{0};        // which of them is refused

void Count(long long change) {
    const long long held = gHeld.fetch_add(change, std::memory_order_relaxed) + change;
    long long peak = gPeak.load(std::memory_order_relaxed);
    while (held > peak && !gPeak.compare_exchange_weak(peak, held, std::memory_order_relaxed)) {
    }
}

}  // namespace

#if IS_SANITIZED

extern "C" {
size_t __sanitizer_get_allocated_size(const volatile void* p);
int __sanitizer_install_malloc_and_free_hooks(void (*onMalloc)(const volatile void*, size_t),
                                              void (*onFree)(const volatile void*));
}

namespace {

void OnMalloc(const volatile void*, size_t size) {
    Count(static_cast<long long>(size));
}
void OnFree(const volatile void* p) {
    if (p != nullptr) Count(-static_cast<long long>(__sanitizer_get_allocated_size(p)));
}
const int gInstalled = __sanitizer_install_malloc_and_free_hooks(&OnMalloc, &OnFree);

}  // namespace

#else

extern "C" {

void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* old, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
void __libc_free(void* p);

static bool IsRefused(size_t size) {
    if (size <= gMost.load(std::memory_order_relaxed)) return false;
    const long number = gLarger++;
    return gRefused == testing_support::RefusedAbove::kAll || gRefused == number;
}

#define COUNTED __attribute__((visibility("default")))

static void* Took(void* p) {
    if (p != nullptr) Count(static_cast<long long>(malloc_usable_size(p)));
    return p;
}

COUNTED void* malloc(size_t size) noexcept {
    if (IsRefused(size)) return nullptr;
    return Took(__libc_malloc(size));
}
COUNTED void* calloc(size_t count, size_t size) noexcept {
    return Took(__libc_calloc(count, size));
}
COUNTED void* realloc(void* old, size_t size) noexcept {
    if (IsRefused(size)) return nullptr;
    const long long before = old == nullptr ? 0 : static_cast<long long>(malloc_usable_size(old));
    void* p = __libc_realloc(old, size);
    if (p == nullptr && size != 0) return nullptr;  // the old block is still there
    // Both may have lived at once while the bytes were copied.
    Took(p);
    Count(-before);
    return p;
}
COUNTED void* memalign(size_t alignment, size_t size) noexcept {
    return Took(__libc_memalign(alignment, size));
}
COUNTED void* aligned_alloc(size_t alignment, size_t size) noexcept {
    return memalign(alignment, size);
}
COUNTED int posix_memalign(void** out, size_t alignment, size_t size) noexcept {
    *out = memalign(alignment, size);
    return *out != nullptr ? 0 : ENOMEM;
}
COUNTED void free(void* p) noexcept {
    if (p == nullptr) return;
    Count(-static_cast<long long>(malloc_usable_size(p)));
    __libc_free(p);
}

}  // extern "C"

#endif

namespace testing_support {

RefusedAbove::RefusedAbove(size_t bytes, long which) {
    gLarger = 0;
    gRefused = which;
    gMost = bytes;
}
long RefusedAbove::Asked() const {
    return gLarger;
}
RefusedAbove::~RefusedAbove() {
    gMost = SIZE_MAX;
}

HeapMeter::HeapMeter() : mBase(gHeld) {
    Restart();
}
size_t HeapMeter::Peak() const {
    return static_cast<size_t>(std::max(0LL, gPeak - mBase));
}
void HeapMeter::Restart() {
    gPeak = gHeld.load();
}
size_t HeapMeter::Held() const {
    return static_cast<size_t>(std::max(0LL, gHeld - mBase));
}

}  // namespace testing_support
