#include "decode/Setup.h"

#include "device/MetaDataKeys.h"

namespace mkvx {
namespace {

// Values below 1 say nothing to a decoder.
int32_t numberOf(android::MetaData& format, uint32_t key) {
    int32_t value = 0;
    return format.findInt32(key, &value) && value > 0 ? value : 0;
}

Bytes dataOf(android::MetaData& format, uint32_t key) {
    uint32_t type = 0;
    const void* data = nullptr;
    size_t size = 0;
    if (!format.findData(key, &type, &data, &size) || size == 0) return {};
    const auto* bytes = static_cast<const uint8_t*>(data);
    return Bytes(bytes, bytes + size);
}

}  // namespace

TrackSetup setupFrom(android::MetaData& format) {
    TrackSetup setup;
    const char* mime = "";
    format.findCString(android::kKeyMIMEType, &mime);
    setup.mime = mime;
    setup.width = numberOf(format, android::kKeyWidth);
    setup.height = numberOf(format, android::kKeyHeight);
    setup.sampleRate = numberOf(format, android::kKeySampleRate);
    setup.channels = numberOf(format, android::kKeyChannelCount);
    setup.bitsPerSample = numberOf(format, android::kKeyBitsPerSample);
    setup.esds = dataOf(format, android::kKeyESDS);
    setup.avcc = dataOf(format, android::kKeyAVCC);
    setup.hvcc = dataOf(format, android::kKeyHVCC);
    setup.mpeg4Headers = dataOf(format, android::kKeyMpeg4Headers);
    setup.vorbisInfo = dataOf(format, android::kKeyVorbisInfo);
    setup.vorbisBooks = dataOf(format, android::kKeyVorbisBooks);
    return setup;
}

}  // namespace mkvx
