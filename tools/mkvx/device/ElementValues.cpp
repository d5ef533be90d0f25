#include "device/ElementValues.h"

#include <fmt/format.h>
#include <algorithm>

#include "device/ElementTable.h"

namespace mkvx {
namespace {

using MatroskaExtReader::CFloat;
using MatroskaExtReader::CID;
using MatroskaExtReader::CInt;
using MatroskaExtReader::CMatroskaNode;
using MatroskaExtReader::CUInt;
using MatroskaExtReader::Failed;
using MatroskaExtReader::SimpleBlock;

constexpr uint64_t kTextBytes = 256, kBinaryBytes = 16;
constexpr uint64_t kSmallestBlock = 4;

// The first bytes of the payload that the source has.
std::vector<uint8_t> headBytes(CMatroskaNode* node, uint64_t most) {
    MatroskaExtReader::CMatroskaFile* file = node->File();
    file->SeekTo(node->DataStart());
    std::vector<uint8_t> bytes(size_t(std::min({node->Size(), most, file->LeftInFile()})));
    if (!bytes.empty() && Failed(file->Read(bytes.data(), uint32_t(bytes.size())))) bytes.clear();
    return bytes;
}

void noteUnreadable(const CMatroskaNode* node, Element& element) {
    element.notes.push_back(
        fmt::format("no value can be read: {} of {} bytes", typeName(element.info), node->Size()));
}

template <typename Value, typename As>
void readScalar(CMatroskaNode* node, Element& element) {
    Value value;
    node->File()->SeekTo(node->DataStart());
    if (Failed(value.Parse(node)))
        noteUnreadable(node, element);
    else
        element.value = As(value.Get());
}

void readDate(CMatroskaNode* node, Element& element) {
    readScalar<CInt, int64_t>(node, element);
    if (const auto* ns = std::get_if<int64_t>(&element.value)) element.value = DateValue{*ns};
}

void readId(CMatroskaNode* node, Element& element) {
    readScalar<CID, uint64_t>(node, element);
    if (const auto* value = std::get_if<uint64_t>(&element.value)) {
        element.value = IdValue{uint32_t(*value)};
    }
}

void readText(CMatroskaNode* node, Element& element) {
    const std::vector<uint8_t> bytes = headBytes(node, kTextBytes);
    if (bytes.empty() && node->Size() != 0) return noteUnreadable(node, element);
    const auto end = std::find(bytes.begin(), bytes.end(), 0);
    element.value =
        TextValue{std::string(bytes.begin(), end), end == bytes.end() && node->Size() > kTextBytes};
}

void readBlock(CMatroskaNode* node, const ValueContext& context, Element& element) {
    if (node->Size() < kSmallestBlock) element.notes.emplace_back("too short for a block");
    SimpleBlock block;
    (void)block.Parse(node);
    BlockValue value;
    value.track = block.TrackNumber.Get();
    value.timecode = int16_t(block.TimeCode.Get());
    value.flags = block.Flags.Get();
    if (context.clusterTime)
        value.timeUs = unitsToUs(__int128(*context.clusterTime) + value.timecode, context.scale);
    if (!block.Header().IsDeliverable(*node->File()))
        element.notes.emplace_back("its bytes are not all there: the plug-in drops it");
    else if (Failed(block.ParseData(node, nullptr, true)))
        element.notes.emplace_back(
            "its lacing does not fit it: the plug-in drops it where it takes frames apart");
    else
        value.frames.assign(block.FrameSizes.begin(), block.FrameSizes.end());
    element.value = std::move(value);
}

void readBinary(CMatroskaNode* node, Element& element) {
    element.value = BinaryValue{headBytes(node, kBinaryBytes), node->Size()};
}

void readByType(CMatroskaNode* node, const ValueContext& context, Element& element) {
    if (element.id == id::kVoid) return;  // padding says nothing
    const bool isBlock = element.id == id::kSimpleBlock || element.id == id::kBlock;
    if (isBlock) return readBlock(node, context, element);
    switch (element.info == nullptr ? ElementType::kBinary : element.info->type) {
        case ElementType::kUint:
            return readScalar<CUInt, uint64_t>(node, element);
        case ElementType::kInt:
            return readScalar<CInt, int64_t>(node, element);
        case ElementType::kFloat:
            return readScalar<CFloat, double>(node, element);
        case ElementType::kAnsi:
        case ElementType::kUtf8:
            return readText(node, element);
        case ElementType::kDate:
            return readDate(node, element);
        case ElementType::kId:
            return readId(node, element);
        case ElementType::kBinary:
            return readBinary(node, element);
        case ElementType::kMaster:
            return;
    }
}

}  // namespace

std::optional<int64_t> unitsToUs(__int128 units, uint64_t scale) {
    if (units < INT64_MIN || units > INT64_MAX) return std::nullopt;  // keeps the product within 128 bits
    const __int128 us = units * scale / 1000;
    return us < INT64_MIN || us > INT64_MAX ? std::nullopt : std::optional<int64_t>(int64_t(us));
}

void readElementValue(CMatroskaNode* node, const ValueContext& context, Element& element) {
    readByType(node, context, element);
    const bool isNumber = std::holds_alternative<uint64_t>(element.value);
    if (isNumber && node->Size() > sizeof(uint64_t))
        element.notes.emplace_back("longer than 8 bytes: the plug-in takes the last 8");
}

}  // namespace mkvx
