// Linked into a test program, keeps the log off its output; LogCapture sees everything all the same.
#include <android/log.h>

namespace {
[[maybe_unused]] const int gBefore = __android_log_set_minimum_priority(ANDROID_LOG_SILENT);
}
