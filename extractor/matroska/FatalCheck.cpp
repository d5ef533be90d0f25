#include "matroska/FatalCheck.h"

#include <android/log.h>

namespace android {

void FailCheck(const char* negated, const char* message) {
    __android_log_assert(negated, "MatroskaExtExtractor", "%s", message);
}

}  // namespace android
