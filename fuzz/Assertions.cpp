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

std::string ExpectedVorbisMessage(const uint8_t* headers, size_t size) {
    const size_t first = size > 1 ? headers[1] : 0, second = size > 2 ? headers[2] : 0;
    const struct {
        int line;
        const char* condition;
        bool holds;
    } rows[] = {
        {911, "codecPrivateSize >= 3", size >= 3},
        {914, "codecPrivate[0] == 0x02", size > 0 && headers[0] == 2},
        {919, "codecPrivateSize > 3 + len1 + len2", size > 3 + first + second},
        {921, "codecPrivate[3] == 0x01", size > 3 && headers[3] == 1},
        {924, "codecPrivate[len1 + 3] == 0x03", size > 3 + first && headers[3 + first] == 3},
        {926, "codecPrivate[len1 + len2 + 3] == 0x05",
         size > 3 + first + second && headers[3 + first + second] == 5},
    };
    for (const auto& row : rows) {
        if (row.holds) continue;
        return "frameworks/av/media/libstagefright/corvo/extractor/matroska/MatroskaExtExtractor:" +
               std::to_string(row.line) + " CHECK(" + row.condition + ") failed.";
    }
    return "";
}

void RequireAssertion(const Assertion& caught, const std::string& message) {
    RequireEqual(message, caught.message, "the assertion is the one that the headers call for");
    if (!caught.happened) return;
    const size_t from = message.find('(') + 1;
    RequireEqual("!(" + message.substr(from, message.rfind(')') - from) + ")", caught.condition,
                 "the assertion's condition");
    RequireEqual("MatroskaExtExtractor", caught.tag, "the assertion's tag");
}

}  // namespace fuzz
