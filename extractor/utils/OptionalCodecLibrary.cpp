#include "utils/OptionalCodecLibrary.h"

#include <dlfcn.h>

#include <android/log.h>

namespace android {
namespace {

typedef int (*CodecIdFunction)(unsigned int fourcc);

// Deliberate: the handle is neither kept nor closed. The loader counts the references to a library that stays
// loaded anyway, and a codec identifier is asked for once or twice per file.
CodecIdFunction LoadFunction(const char* path) {
    void* library = dlopen(path, RTLD_LAZY);
    if (library == nullptr) {
        __android_log_print(ANDROID_LOG_INFO, "Utils", "Failed to load libffmpeg_utils.so, dlerror: %s",
                            dlerror());
        return nullptr;
    }
    void* function = dlsym(library, "FfmpegGetCodecIDFromFourCC");
    if (function == nullptr) {
        __android_log_print(ANDROID_LOG_INFO, "Utils", "Failed to find symbol, dlerror: %s", dlerror());
    }
    return reinterpret_cast<CodecIdFunction>(function);
}

}  // namespace

OptionalCodecLibrary& OptionalCodecLibrary::Installed() {
    static OptionalCodecLibrary library("/system/lib/libffmpeg_utils.so");
    return library;
}

int OptionalCodecLibrary::codecId(unsigned int fourcc) const {
    const CodecIdFunction function = LoadFunction(mPath);
    if (function != nullptr) return function(fourcc);
    __android_log_print(ANDROID_LOG_VERBOSE, "Utils", "fourcc:%u", fourcc);
    return -1;
}

}  // namespace android
