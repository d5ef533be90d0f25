#include "matroska/FatalCheck.h"

#include <stdio.h>

#include <android/log.h>

namespace android {

void FailCheck(const char* condition, int line) {
    char negated[128];
    snprintf(negated, sizeof(negated), "!(%s)", condition);
    __android_log_assert(negated, "MatroskaExtExtractor", "%s:%d CHECK(%s) failed.",
                         "frameworks/av/media/libstagefright/corvo/extractor/matroska/MatroskaExtExtractor",
                         line, condition);
}

}  // namespace android
