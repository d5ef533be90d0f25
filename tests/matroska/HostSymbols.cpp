// This program exports names that the plug-in exports too, with values of its own. A loader prefers the
// program's; the plug-in must not.
#include <stdint.h>

#define HOST_EXPORT __attribute__((visibility("default")))

namespace android {

extern const char *MEDIA_MIMETYPE_CONTAINER_MATROSKA_EXT, *MEDIA_MIMETYPE_VIDEO_MPEG2;
HOST_EXPORT const char* MEDIA_MIMETYPE_CONTAINER_MATROSKA_EXT = "host/container";
HOST_EXPORT const char* MEDIA_MIMETYPE_VIDEO_MPEG2 = "host/mpeg2";

const char* GetMimeType(unsigned int fourcc);
HOST_EXPORT const char* GetMimeType(unsigned int) {
    return nullptr;
}

unsigned int H264DataPreprocess_AVC(unsigned char* data, int size);
HOST_EXPORT unsigned int H264DataPreprocess_AVC(unsigned char*, int) {
    return 1;
}

}  // namespace android
