#include "codecs/UnitFault.h"

#include "codecs/BitReader.h"
#include "utils/MimeTypes.h"

namespace mkvx {
namespace {

// RFC 6386, 9.1. A frame of no bytes repeats the one before.
const char* vp8Fault(const uint8_t* data, size_t size) {
    constexpr size_t kKeyHead = 10;
    if (size == 0 || (data[0] & 1) != 0) return nullptr;
    if (size < kKeyHead) return "ends within a VP8 key frame's head";
    return data[3] == 0x9D && data[4] == 0x01 && data[5] == 0x2A ? nullptr : "has no VP8 start code";
}

// VP9 bitstream specification, 6.2: whole frames begin with a key frame's or another's code to synchronise.
const char* vp9Fault(const uint8_t* data, size_t size) {
    constexpr uint32_t kMarker = 2, kSync = 0x498342;
    BitReader bits(data, size);
    if (bits.take(2) != kMarker) return "has no VP9 frame marker";
    const uint32_t low = bits.take(1), profile = bits.take(1) << 1 | low;
    if (profile == 3) bits.skip(1);
    if (bits.flag() || bits.flag()) return nullptr;  // shows another frame, or follows others
    bits.skip(2);
    return bits.take(24) == kSync ? nullptr : "has no VP9 sync code";
}

// ETSI TS 102 366, 4.3.1; in either byte order.
const char* ac3Fault(const uint8_t* data, size_t size) {
    const bool isSync =
        size >= 2 && ((data[0] == 0x0B && data[1] == 0x77) || (data[0] == 0x77 && data[1] == 0x0B));
    return isSync ? nullptr : "has no AC-3 sync word";
}

// RFC 9639, 9.1.
const char* flacFault(const uint8_t* data, size_t size) {
    return size >= 2 && data[0] == 0xFF && (data[1] & 0xFE) == 0xF8 ? nullptr : "has no FLAC sync code";
}

}  // namespace

const char* unitFault(const std::string& mime, const uint8_t* data, size_t size) {
    using namespace android;
    if (mime == MEDIA_MIMETYPE_VIDEO_VP8) return vp8Fault(data, size);
    if (mime == MEDIA_MIMETYPE_VIDEO_VP9) return vp9Fault(data, size);
    if (mime == MEDIA_MIMETYPE_AUDIO_AC3) return ac3Fault(data, size);
    if (mime == MEDIA_MIMETYPE_AUDIO_FLAC) return flacFault(data, size);
    return nullptr;
}

}  // namespace mkvx
