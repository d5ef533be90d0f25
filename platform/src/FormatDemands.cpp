#include <host/FormatDemands.h>

#include <string.h>
#include <strings.h>

namespace android {
namespace host {

namespace {

constexpr size_t kParameterSetRoom = 1024;  // the framework's buffer for the sets of one kind
constexpr size_t kStartCodeBytes = 4;       // goes in front of each set there
constexpr size_t kShortestRecord = 7;
constexpr size_t kHvcHeaderBytes = 22;  // in front of the number of arrays

struct Bytes {
    const uint8_t* at;
    size_t left;
};

bool findBytes(const sp<MetaData>& meta, uint32_t key, Bytes* bytes) {
    uint32_t type;
    const void* data;
    if (!meta->findData(key, &type, &data, &bytes->left)) return false;
    bytes->at = static_cast<const uint8_t*>(data);
    return true;
}

// `count` sets, each behind its 16-bit length; empty when all of them are there and fit the buffer.
std::string judgeSets(Bytes* bytes, unsigned count, const char* kind) {
    size_t used = 0;
    for (unsigned i = 0; i < count; ++i) {
        if (bytes->left < 2) return std::string("the record ends in front of a ") + kind;
        const size_t size = size_t{bytes->at[0]} << 8 | bytes->at[1];
        bytes->at += 2;
        bytes->left -= 2;
        if (bytes->left < size) return std::string("the record ends within a ") + kind;
        bytes->at += size;
        bytes->left -= size;
        used += kStartCodeBytes + size;
        if (used > kParameterSetRoom)
            return std::string("the ") + kind + "s take more than the framework's buffer of 1024 bytes";
    }
    return std::string();
}

// ISO/IEC 14496-15, AVCDecoderConfigurationRecord.
std::string judgeAvc(Bytes bytes) {
    if (bytes.left < kShortestRecord)
        return "the record has " + std::to_string(bytes.left) + " bytes, and the framework asks for 7";
    if (bytes.at[0] != 1)
        return "the record begins with version " + std::to_string(bytes.at[0]) +
               ", and the framework knows only 1";
    const unsigned sequenceSets = bytes.at[5] & 0x1f;
    bytes.at += 6;
    bytes.left -= 6;
    std::string fault = judgeSets(&bytes, sequenceSets, "sequence parameter set");
    if (!fault.empty()) return fault;
    if (bytes.left < 1) return "the record ends in front of the number of picture parameter sets";
    const unsigned pictureSets = bytes.at[0];
    ++bytes.at;
    --bytes.left;
    return judgeSets(&bytes, pictureSets, "picture parameter set");
}

std::string judgeHevc(const Bytes& bytes) {
    if (bytes.left < kShortestRecord)
        return "the record has " + std::to_string(bytes.left) + " bytes, and the framework asks for 7";
    if (bytes.left <= kHvcHeaderBytes)
        return "the record has " + std::to_string(bytes.left) +
               " bytes, and ends in front of its parameter sets";
    return std::string();
}

bool hasInt32(const sp<MetaData>& meta, uint32_t key) {
    int32_t value;
    return meta->findInt32(key, &value);
}

}  // namespace

std::optional<FormatRefusal> FindFormatRefusal(const sp<MetaData>& meta) {
    const char* mime;
    if (!meta->findCString(kKeyMIMEType, &mime))
        return FormatRefusal{true, kKeyMIMEType, "there is no MIME type"};
    const bool isVideo = strncasecmp(mime, "video/", 6) == 0;
    const bool isAudio = strncasecmp(mime, "audio/", 6) == 0;
    if (isVideo && !(hasInt32(meta, kKeyWidth) && hasInt32(meta, kKeyHeight)))
        return FormatRefusal{true, kKeyWidth, "there is no picture size"};
    if (isAudio && !(hasInt32(meta, kKeyChannelCount) && hasInt32(meta, kKeySampleRate)))
        return FormatRefusal{true, kKeySampleRate, "there is no sample rate or channel count"};
    Bytes bytes;
    // One record is looked at, in this order.
    if (findBytes(meta, kKeyAVCC, &bytes)) {
        const std::string fault = judgeAvc(bytes);
        return fault.empty() ? std::nullopt : std::optional<FormatRefusal>({true, kKeyAVCC, fault});
    }
    if (findBytes(meta, kKeyHVCC, &bytes)) {
        const std::string fault = judgeHevc(bytes);
        return fault.empty() ? std::nullopt : std::optional<FormatRefusal>({true, kKeyHVCC, fault});
    }
    if (!meta->hasData(kKeyESDS) && meta->hasData(kKeyVorbisInfo) && !meta->hasData(kKeyVorbisBooks))
        return FormatRefusal{false, kKeyVorbisInfo, "the Vorbis headers lack their codebooks"};
    return std::nullopt;
}

}  // namespace host
}  // namespace android
