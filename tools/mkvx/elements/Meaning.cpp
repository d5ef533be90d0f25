#include "elements/Meaning.h"

#include <fmt/format.h>

#include "base/Text.h"
#include "device/ElementIds.h"

namespace mkvx {
namespace {

std::string clockOf(uint64_t units, uint64_t scale) {
    const std::optional<int64_t> us = unitsToUs(units, scale);
    return us ? clockTime(*us) : std::string();
}

const char* trackTypeName(uint64_t type) {
    switch (type) {
        case 1:
            return "video";
        case 2:
            return "audio";
        case 3:
            return "complex";
        case 16:
            return "logo";
        case 17:
            return "subtitle";
        case 18:
            return "buttons";
        case 32:
            return "control";
        case 33:
            return "metadata";
        default:
            return "";
    }
}

const char* compressionName(uint64_t algorithm) {
    static const char* const kNames[] = {"zlib", "bzlib", "LZO", "header stripping"};
    return algorithm < 4 ? kNames[algorithm] : "";
}

std::string meaningOfNumber(uint32_t id, uint64_t value, const ValueContext& context) {
    switch (id) {
        case id::kTrackType:
            return trackTypeName(value);
        case id::kContentCompAlgo:
            return compressionName(value);
        case id::kContentEncodingType:
            return value == 0 ? "compression" : value == 1 ? "encryption" : "";
        case id::kTimecodeScale:
            return "ns a unit";
        case id::kClusterTimecode:
        case id::kCueTime:
        case id::kBlockDuration:
            return clockOf(value, context.scale);
        case id::kChapterTimeStart:
        case id::kChapterTimeEnd:
            return clockOf(value, 1);
        case id::kDefaultDuration:
            return value == 0 ? "" : fmt::format("{:.6g} a second", 1e9 / double(value));
        case id::kSeekPosition:
        case id::kCueClusterPosition:
        case id::kClusterPosition:
            return fmt::format("offset {}", value + context.segmentData);
        default:
            return {};
    }
}

std::string meaningOf(const Element& element, const ValueContext& context) {
    if (const auto* number = std::get_if<uint64_t>(&element.value))
        return meaningOfNumber(element.id, *number, context);
    const auto* real = std::get_if<double>(&element.value);
    if (element.id != id::kDuration || real == nullptr) return {};
    const double us = *real * double(context.scale) / 1000;
    return us >= 0 && us < 9e18 ? clockTime(int64_t(us)) : std::string();
}

}  // namespace

void readMeaningfully(ElementWalk& walk, Element& element) {
    walk.readValue(element);
    element.meaning = meaningOf(element, walk.context());
}

}  // namespace mkvx
