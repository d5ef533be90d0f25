// Metadata keys that this plug-in and the platform's own decoders share beyond the framework's list.
#pragma once

#include <stdint.h>

namespace android {

enum : uint32_t {
    kKeyPlatformFlags = 'flag',  // int32; the only value written is kPlatformFlagFrames
    kKeyPlatformCodec = 'cdid',  // int32, the platform decoder's identifier for the codec
    kKeyBitsPerSample = 'bpSa',  // int32, PCM
    kKeyMpeg4Headers = 'MP4C',   // data, what stands in front of the first picture of an MPEG-4 visual track
    kKeySubtitleEnd = 'subE',    // int64 microseconds, on the buffers of subtitle tracks
};

constexpr int32_t kPlatformFlagFrames = 0x4000;

}  // namespace android
