#include "Assertions.h"

#include <android/log.h>
#include <setjmp.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "FuzzTarget.h"

#if defined(__SANITIZE_ADDRESS__)
#define FUZZ_CHECKS_LEAKS
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define FUZZ_CHECKS_LEAKS
#endif
#endif
#ifdef FUZZ_CHECKS_LEAKS
#include <sanitizer/lsan_interface.h>
#endif

namespace {

// One at a time: only the thread that fuzzes runs bodies that may assert.
jmp_buf gBack;
bool gIsArmed = false;
fuzz::Assertion gCaught;

}  // namespace

extern "C" void __android_log_assert(const char* condition, const char* tag, const char* format, ...) {
    char message[512];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(message, sizeof(message), format, arguments);
    va_end(arguments);
    if (!gIsArmed) {
        std::fprintf(stderr, "UNEXPECTED ASSERTION: %s\n", message);
        std::abort();
    }
    gCaught.happened = true;
    gCaught.condition = condition;
    gCaught.tag = tag;
    gCaught.message = message;
    longjmp(gBack, 1);
}

namespace fuzz {

ScopedLeaks::ScopedLeaks(bool isActive) : mIsActive(isActive) {
#ifdef FUZZ_CHECKS_LEAKS
    if (mIsActive) __lsan_disable();
#endif
}

ScopedLeaks::~ScopedLeaks() {
#ifdef FUZZ_CHECKS_LEAKS
    if (mIsActive) __lsan_enable();
#endif
}

Assertion Catch(const std::function<void()>& body) {
    gCaught = Assertion();
    gIsArmed = true;
    if (setjmp(gBack) == 0) body();
    gIsArmed = false;
    return gCaught;
}

void RequireAssertion(const Assertion& caught, const char* condition) {
    Require(caught.happened == (condition != nullptr), "only unsound Vorbis headers end the process");
    if (!caught.happened) return;
    const std::string text = condition;
    RequireEqual("!(" + text + ")", caught.condition, "the assertion's condition");
    RequireEqual("MatroskaExtExtractor", caught.tag, "the assertion's tag");
    const std::string end = " CHECK(" + text + ") failed.";
    Require(caught.message.size() > end.size() &&
                caught.message.compare(caught.message.size() - end.size(), end.size(), end) == 0,
            "the assertion's message: " + caught.message);
}

}  // namespace fuzz
