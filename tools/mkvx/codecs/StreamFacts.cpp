#include "codecs/StreamFacts.h"

#include <fmt/format.h>
#include <algorithm>

#include "device/CodecRecords.h"
#include "utils/MimeTypes.h"

namespace mkvx {
namespace {

constexpr size_t kMostOfUnit = 1 << 16;  // bytes of a unit in which headers are looked for

Bytes headOf(const uint8_t* data, size_t size) {
    return Bytes(data, data + std::min(size, kMostOfUnit));
}

void add(std::string& text, const std::string& more) {
    if (!more.empty()) text += (text.empty() ? "" : ", ") + more;
}

// As many digits as tell 23.976 from 24.
std::string rateText(double rate) {
    std::string text = fmt::format("{:.3f}", rate);
    while (text.back() == '0') text.pop_back();
    if (text.back() == '.') text.pop_back();
    return text + " fps";
}

template <typename Value>
void fill(Value& value, const Value& more) {
    if (value == Value()) value = more;
}

}  // namespace

std::string StreamFacts::text() const {
    std::string text;
    add(text, profile);
    if (!level.empty()) add(text, "level " + level);
    if (bitDepth != 0) add(text, fmt::format("{} bits", bitDepth));
    add(text, chroma);
    if (frameRate > 0) add(text, rateText(frameRate));
    return text;
}

StreamFacts factsOfConfig(const std::string& mime, const StreamConfig& config) {
    using namespace android;
    if (mime == MEDIA_MIMETYPE_VIDEO_AVC) return avcFacts(avccParameterSets(config.avcc));
    if (mime == MEDIA_MIMETYPE_VIDEO_HEVC) return hevcFacts(hvccParameterSets(config.hvcc));
    if (mime == MEDIA_MIMETYPE_VIDEO_VP9) return vp9Features(config.codecPrivate);
    if (mime == MEDIA_MIMETYPE_VIDEO_MPEG4) {
        StreamFacts facts = mpeg4Facts(config.specificInfo);
        complete(facts, mpeg4Facts(config.mpeg4Headers));
        return facts;
    }
    if (mime == MEDIA_MIMETYPE_VIDEO_MPEG1 || mime == MEDIA_MIMETYPE_VIDEO_MPEG2)
        return mpeg2Facts(config.codecPrivate);
    if (mime == MEDIA_MIMETYPE_AUDIO_AAC) return aacFacts(config.specificInfo);
    if (mime == MEDIA_MIMETYPE_AUDIO_FLAC) return flacFacts(config.codecPrivate);
    return {};
}

StreamFacts factsOfUnit(const std::string& mime, const uint8_t* data, size_t size) {
    using namespace android;
    if (mime == MEDIA_MIMETYPE_VIDEO_AVC) return avcFacts(headOf(data, size));
    if (mime == MEDIA_MIMETYPE_VIDEO_HEVC) return hevcFacts(headOf(data, size));
    if (mime == MEDIA_MIMETYPE_VIDEO_VP8) return vp8Facts(data, size);
    if (mime == MEDIA_MIMETYPE_VIDEO_VP9) return vp9Facts(data, size);
    if (mime == MEDIA_MIMETYPE_VIDEO_MPEG4) return mpeg4Facts(headOf(data, size));
    if (mime == MEDIA_MIMETYPE_VIDEO_MPEG1 || mime == MEDIA_MIMETYPE_VIDEO_MPEG2)
        return mpeg2Facts(headOf(data, size));
    if (mime == MEDIA_MIMETYPE_AUDIO_MPEG) return mpegAudioFacts(data, size);
    return {};
}

void complete(StreamFacts& facts, const StreamFacts& more) {
    fill(facts.profile, more.profile);
    fill(facts.level, more.level);
    fill(facts.bitDepth, more.bitDepth);
    fill(facts.chroma, more.chroma);
    fill(facts.width, more.width);
    fill(facts.height, more.height);
    fill(facts.frameRate, more.frameRate);
    fill(facts.sampleRate, more.sampleRate);
    fill(facts.channels, more.channels);
}

}  // namespace mkvx
