#include "utils/DebugAids.h"

#include <stddef.h>
#include <stdio.h>

#include <android/log.h>
#include <utils/CallStack.h>

namespace android {

void dumpFrame(const char* path, const void* data, int size) {
    FILE* file = fopen(path, "ab+");
    if (file == nullptr) return;
    // What was not written is not worth a word: the file is all that anyone looks at.
    if (size > 0) (void)!fwrite(data, static_cast<size_t>(size), 1, file);
    fclose(file);
}

void showBacktrace() {
    CallStack stack;
    stack.update(1, -1);  // without this function's own frame; of the calling thread
    stack.log("showBacktrace", ANDROID_LOG_DEBUG);
}

}  // namespace android
