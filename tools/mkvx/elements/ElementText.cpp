#include "elements/ElementText.h"

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <algorithm>
#include <ctime>

#include "base/Text.h"
#include "device/ElementTable.h"

namespace mkvx {
namespace {

constexpr int64_t kYear2001 = 978307200;  // seconds since 1970

const char* lacingName(uint8_t flags) {
    static const char* const kNames[] = {"", "Xiph lacing", "fixed-size lacing", "EBML lacing"};
    return kNames[flags >> 1 & 3];
}

std::string frameText(const BlockValue& block) {
    constexpr size_t kShown = 8;
    if ((block.flags >> 1 & 3) == 0)
        return block.frames.empty() ? "" : fmt::format(", {} B", block.frames[0]);
    std::string text = fmt::format(", {}, {} frames", lacingName(block.flags), block.frames.size());
    for (size_t i = 0; i < std::min(block.frames.size(), kShown); ++i)
        text += fmt::format("{}{}", i == 0 ? ": " : " ", block.frames[i]);
    if (block.frames.size() > kShown) text += fmt::format(" and {} more", block.frames.size() - kShown);
    return text + (block.frames.empty() ? "" : " B");
}

// "track number 1, +40 (00:00:02.040), key, 2975 B"
std::string blockText(uint32_t id, const BlockValue& block) {
    std::string text = fmt::format("track number {}, {:+}", block.track, block.timecode);
    if (block.timeUs) text += " (" + clockTime(*block.timeUs) + ")";
    const bool isSimple = id == id::kSimpleBlock;
    if (isSimple && (block.flags & 0x80) != 0) text += ", key";
    if ((block.flags & 0x08) != 0) text += ", invisible";
    if (isSimple && (block.flags & 0x01) != 0) text += ", discardable";
    return text + frameText(block);
}

std::string idValueText(const IdValue& value) {
    const std::string name = elementName(value.id);
    return findElement(value.id) == nullptr ? name : fmt::format("{} ({})", name, idText(value.id));
}

std::string binaryText(const BinaryValue& value) {
    return hexBytes(value.head) + (value.size > value.head.size() ? " ..." : "");
}

std::string quoted(const TextValue& value) {
    return fmt::format("\"{}\"{}", printable(value.head), value.isCut ? "..." : "");
}

struct ValueToText {
    const Element& element;

    std::string operator()(std::monostate) const { return {}; }
    std::string operator()(uint64_t value) const { return std::to_string(value); }
    std::string operator()(int64_t value) const { return std::to_string(value); }
    std::string operator()(double value) const { return fmt::format("{}", value); }
    std::string operator()(const TextValue& value) const { return quoted(value); }
    std::string operator()(const BinaryValue& value) const { return binaryText(value); }
    std::string operator()(const IdValue& value) const { return idValueText(value); }
    std::string operator()(const DateValue& value) const { return dateText(value); }
    std::string operator()(const BlockValue& value) const { return blockText(element.id, value); }
};

}  // namespace

std::string dateText(DateValue date) {
    int64_t seconds = date.ns / 1000000000, rest = date.ns % 1000000000;
    if (rest < 0) {
        --seconds;
        rest += 1000000000;
    }
    const std::time_t time = kYear2001 + seconds;
    std::string text = fmt::format("{:%Y-%m-%dT%H:%M:%S}", fmt::gmtime(time));
    if (rest != 0) {
        text += fmt::format(".{:09}", rest);
        text.erase(text.find_last_not_of('0') + 1);
    }
    return text + "Z";
}

std::string valueText(const Element& element) {
    const std::string text = std::visit(ValueToText{element}, element.value);
    return element.meaning.empty() ? text : fmt::format("{} ({})", text, element.meaning);
}

std::string sizeText(const Element& element) {
    if (element.hasUnknownSize) return "size unknown";
    return element.size == 1 ? "1 byte" : fmt::format("{} bytes", element.size);
}

std::string hexBytes(const std::vector<uint8_t>& bytes) {
    std::string text;
    for (const uint8_t byte : bytes) text += fmt::format("{}{:02X}", text.empty() ? "" : " ", byte);
    return text;
}

}  // namespace mkvx
