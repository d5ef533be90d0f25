#include "decoders/Fit.h"

#include <fmt/format.h>
#include <media/stagefright/MediaDefs.h>
#include <algorithm>
#include <cmath>

#include "base/Text.h"

namespace mkvx {
namespace {

constexpr size_t kMostTold = 4;  // decoders that do not take a stream

// In whole numbers where it is one.
std::string numberText(double value) {
    return value == std::floor(value) ? fmt::format("{:.0f}", value) : fmt::format("{:.3f}", value);
}

// Levels of one codec in their order: numbers, "1b" behind "1", and MPEG-2's by name.
double levelRank(const std::string& level) {
    const char* const names[] = {"Low", "Main", "High 1440", "High"};
    for (size_t i = 0; i < std::size(names); ++i)
        if (level == names[i]) return double(i);
    const double rank = std::strtod(level.c_str(), nullptr);
    return !level.empty() && level.back() == 'b' ? rank + 0.05 : rank;
}

// ---- limits: each says what it breaks, or nothing

std::string outside(const std::optional<LimitRange>& range, double value, const std::string& what) {
    if (!range || value <= 0 || range->holds(value)) return {};
    const bool isMore = value > range->most;
    return fmt::format("{} {}, the {} is {}", numberText(value), what, isMore ? "most" : "least",
                       numberText(isMore ? range->most : range->least));
}

// Of rates that are averages only the upper end counts: no decoder waits for the next unit.
std::string above(const std::optional<LimitRange>& range, double value, const std::string& what) {
    return range && value > range->most ? outside(range, value, what) : std::string();
}

std::string brokenSize(const DecoderLimits& limits, const StreamFacts& stream) {
    const uint64_t width = stream.width, height = stream.height;
    if (width == 0 || height == 0) return {};
    const std::string size = fmt::format("{}x{}", width, height);
    if (limits.largest && (width > limits.largest->width || height > limits.largest->height))
        return fmt::format("{} is more than {}x{}", size, limits.largest->width, limits.largest->height);
    if (limits.smallest && (width < limits.smallest->width || height < limits.smallest->height))
        return fmt::format("{} is less than {}x{}", size, limits.smallest->width, limits.smallest->height);
    if (width % limits.alignment.width != 0 || height % limits.alignment.height != 0)
        return fmt::format("{} is no multiple of {}x{}", size, limits.alignment.width,
                           limits.alignment.height);
    return {};
}

std::string brokenBlocks(const DecoderLimits& limits, const StreamFacts& stream) {
    const auto across = [](uint64_t length, uint64_t block) { return (length + block - 1) / block; };
    const double blocks = double(across(stream.width, limits.blockSize.width)) *
                          double(across(stream.height, limits.blockSize.height));
    const std::string unit = fmt::format("{}x{}", limits.blockSize.width, limits.blockSize.height);
    std::string count = outside(limits.blocks, blocks, "blocks of " + unit);
    if (!count.empty()) return count;
    return above(limits.blocksPerSecond, std::round(blocks * stream.frameRate),
                 fmt::format("blocks of {} a second ({}x{} at {} fps)", unit, stream.width, stream.height,
                             numberText(stream.frameRate)));
}

std::string brokenSampleRate(const DecoderLimits& limits, const StreamFacts& stream) {
    const auto& rates = limits.sampleRates;
    const auto holds = [&](const LimitRange& range) { return range.holds(stream.sampleRate); };
    if (rates.empty() || stream.sampleRate == 0 || std::any_of(rates.begin(), rates.end(), holds)) return {};
    std::string text;
    for (const LimitRange& range : rates)
        text += (text.empty() ? "" : ", ") + numberText(range.least) +
                (range.least < range.most ? "-" + numberText(range.most) : "");
    return fmt::format("{} Hz is none of its sample rates ({})", stream.sampleRate, text);
}

std::string brokenLimit(const DecoderLimits& limits, const Demand& demand) {
    const StreamFacts& stream = demand.stream;
    for (const std::string& broken :
         {brokenSize(limits, stream), brokenBlocks(limits, stream),
          above(limits.frameRate, std::round(stream.frameRate * 1000) / 1000, "fps"),
          brokenSampleRate(limits, stream), outside(limits.channels, stream.channels, "channels"),
          above(limits.bitRate, double(demand.bitRate), "bits a second")})
        if (!broken.empty()) return broken;
    return {};
}

// ---- profiles

std::string namesOf(const std::vector<TakenProfile>& profiles) {
    std::string text;
    for (const TakenProfile& profile : profiles) text += (text.empty() ? "" : ", ") + profile.name;
    return text;
}

std::string brokenProfile(const TakenStreams& taken, const StreamFacts& stream) {
    const auto isIt = [&](const TakenProfile& profile) { return profile.name == stream.profile; };
    const auto found = std::find_if(taken.profiles.begin(), taken.profiles.end(), isIt);
    const bool isListed = taken.profiles.empty() || stream.profile.empty() || found != taken.profiles.end();
    if (!isListed)
        return fmt::format("the profile {} is not among {}", stream.profile, namesOf(taken.profiles));
    if (taken.bits != 0 && stream.bitDepth > taken.bits)
        return fmt::format("{} bits are more than {}", stream.bitDepth, taken.bits);
    const auto& chroma = taken.chroma;
    if (!chroma.empty() && !stream.chroma.empty() &&
        std::find(chroma.begin(), chroma.end(), stream.chroma) == chroma.end())
        return fmt::format("the chroma format {} is not {}", stream.chroma, chroma.front());
    if (found == taken.profiles.end() || found->level.empty() || stream.level.empty()) return {};
    return levelRank(stream.level) > levelRank(found->level)
               ? fmt::format("level {} is above {}", stream.level, found->level)
               : std::string();
}

const TakenStreams* entryFor(const ProfileTable& profiles, const DeviceDecoder& decoder) {
    auto found = profiles.find(decoder.name);
    if (found == profiles.end()) found = profiles.find(decoder.mime);
    return found != profiles.end() ? &found->second : nullptr;
}

Fit tried(const ProfileTable& profiles, const DeviceDecoder& decoder, const Demand& demand) {
    Fit fit;
    fit.sentence = brokenLimit(decoder.limits, demand);
    if (!fit.sentence.empty()) fit.obstacle = Obstacle::kLimit;
    const TakenStreams* taken = entryFor(profiles, decoder);
    if (fit.obstacle == Obstacle::kNothing && taken != nullptr) {
        fit.sentence = brokenProfile(*taken, demand.stream);
        if (!fit.sentence.empty()) fit.obstacle = Obstacle::kProfile;
    }
    if (fit.obstacle == Obstacle::kNothing) fit.decoder = decoder.name;
    return fit;
}

}  // namespace

Fit fitDecoders(const CodecList& list, const ProfileTable& profiles, const Demand& demand) {
    Fit best;
    best.obstacle = Obstacle::kMime;
    best.sentence = "the device's list has no decoder for " + demand.mime;
    size_t told = 0, more = 0;
    std::string sentence;
    for (const DeviceDecoder& decoder : list.decoders) {
        if (decoder.mime != demand.mime) continue;
        Fit fit = tried(profiles, decoder, demand);
        if (fit.obstacle == Obstacle::kNothing) return fit;
        best.obstacle = fit.obstacle;
        if (told++ < kMostTold)
            sentence += (sentence.empty() ? "" : "; ") + printable(decoder.name) + ": " + fit.sentence;
        else
            ++more;
    }
    if (!sentence.empty()) best.sentence = sentence;
    if (more > 0) best.sentence += fmt::format("; and {} more", more);
    return best;
}

Fit fitProfiles(const ProfileTable& profiles, const Demand& demand) {
    Fit fit;
    const auto found = profiles.find(demand.mime);
    if (found == profiles.end()) {
        fit.obstacle = Obstacle::kMime;
        return fit;
    }
    fit.sentence = brokenProfile(found->second, demand.stream);
    if (!fit.sentence.empty()) fit.obstacle = Obstacle::kProfile;
    return fit;
}

bool isVendorMime(const std::string& mime) {
    using namespace android;
    for (const char* known : {MEDIA_MIMETYPE_VIDEO_VP8,          MEDIA_MIMETYPE_VIDEO_VP9,
                              MEDIA_MIMETYPE_VIDEO_AVC,          MEDIA_MIMETYPE_VIDEO_HEVC,
                              MEDIA_MIMETYPE_VIDEO_MPEG4,        MEDIA_MIMETYPE_VIDEO_H263,
                              MEDIA_MIMETYPE_VIDEO_MPEG2,        MEDIA_MIMETYPE_VIDEO_RAW,
                              MEDIA_MIMETYPE_AUDIO_AAC,          MEDIA_MIMETYPE_AUDIO_MPEG,
                              MEDIA_MIMETYPE_AUDIO_MPEG_LAYER_I, MEDIA_MIMETYPE_AUDIO_MPEG_LAYER_II,
                              MEDIA_MIMETYPE_AUDIO_VORBIS,       MEDIA_MIMETYPE_AUDIO_OPUS,
                              MEDIA_MIMETYPE_AUDIO_FLAC,         MEDIA_MIMETYPE_AUDIO_AC3,
                              MEDIA_MIMETYPE_AUDIO_EAC3,         MEDIA_MIMETYPE_AUDIO_RAW,
                              MEDIA_MIMETYPE_AUDIO_G711_ALAW,    MEDIA_MIMETYPE_AUDIO_G711_MLAW,
                              MEDIA_MIMETYPE_AUDIO_MSGSM})
        if (mime == known) return false;
    return true;
}

}  // namespace mkvx
