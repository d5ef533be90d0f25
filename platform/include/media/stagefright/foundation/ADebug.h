// Assertions that are always on. A failed one logs one FATAL line under the including file's LOG_TAG, made of
// the file, the line and the condition, and ends the process (liblog's __android_log_assert).
//
// The operands of CHECK_EQ and its kind must be comparable with each other and fit one of AString::append's
// overloads: small integers, bool and enums print as int, char as a character, a C string as its text; a
// null-pointer constant or an sp<> as operand does not compile.
#pragma once

#include <string.h>

#include <utils/Errors.h>
#include <utils/Log.h>

#include <media/stagefright/foundation/ABase.h>
#include <media/stagefright/foundation/AString.h>

namespace android {

// The name of a status code ("ERROR_IO"), or its number as text for a code without a name here.
// The pointer stays valid: for codes without a name, until the calling thread's next such call.
const char* asString(status_t code);

namespace debug {

// "X vs. Y", for the message of a comparison that failed.
template <typename A, typename B>
__attribute__((noinline, cold)) AString DescribeOperands(const A& a, const B& b) {
    AString text;
    text.append(a);
    text.append(" vs. ");
    text.append(b);
    return text;
}

// Each gives an empty string when the comparison holds.
#define DEFINE_CHECK_COMPARISON(name, op)                     \
    template <typename A, typename B>                         \
    inline AString Compare_##name(const A& a, const B& b) {   \
        return (a op b) ? AString() : DescribeOperands(a, b); \
    }
DEFINE_CHECK_COMPARISON(EQ, ==)
DEFINE_CHECK_COMPARISON(NE, !=)
DEFINE_CHECK_COMPARISON(LE, <=)
DEFINE_CHECK_COMPARISON(LT, <)
DEFINE_CHECK_COMPARISON(GE, >=)
DEFINE_CHECK_COMPARISON(GT, >)
#undef DEFINE_CHECK_COMPARISON

}  // namespace debug
}  // namespace android

#define ADEBUG_TEXT_(x) #x
#define ADEBUG_TEXT(x) ADEBUG_TEXT_(x)
#define ADEBUG_PLACE __FILE__ ":" ADEBUG_TEXT(__LINE__)

#define CHECK(condition) \
    LOG_ALWAYS_FATAL_IF(!(condition), "%s", ADEBUG_PLACE " CHECK(" #condition ") failed.")

#define ADEBUG_CHECK_OP(suffix, x, y)                                                                   \
    do {                                                                                                \
        ::android::AString adebug_operands = ::android::debug::Compare_##suffix(x, y);                  \
        if (!adebug_operands.empty()) {                                                                 \
            ::android::AString adebug_text(ADEBUG_PLACE " CHECK_" #suffix "( " #x "," #y ") failed: "); \
            adebug_text.append(adebug_operands);                                                        \
            LOG_ALWAYS_FATAL("%s", adebug_text.c_str());                                                \
        }                                                                                               \
    } while (false)

#define CHECK_EQ(x, y) ADEBUG_CHECK_OP(EQ, x, y)
#define CHECK_NE(x, y) ADEBUG_CHECK_OP(NE, x, y)
#define CHECK_LE(x, y) ADEBUG_CHECK_OP(LE, x, y)
#define CHECK_LT(x, y) ADEBUG_CHECK_OP(LT, x, y)
#define CHECK_GE(x, y) ADEBUG_CHECK_OP(GE, x, y)
#define CHECK_GT(x, y) ADEBUG_CHECK_OP(GT, x, y)

#define TRESPASS() LOG_ALWAYS_FATAL("%s", ADEBUG_PLACE " Should not be here.")
