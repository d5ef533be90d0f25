// One element of a file, or what stands in the place of one, as plain values. ElementWalk fills them.
//
// Offsets and sizes are bytes of the file; times are timecode units unless a name says otherwise. Texts are
// the bytes of the file, cut to a bound, and need not be valid UTF-8. Copy freely.
#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "device/ElementIds.h"

namespace mkvx {

// The first bytes of a binary.
struct BinaryValue {
    std::vector<uint8_t> head;
    uint64_t size = 0;  // of the whole
};

// The first bytes of a text, to its first zero byte.
struct TextValue {
    std::string head;
    bool isCut = false;
};

// An element's ID as a value.
struct IdValue {
    uint32_t id = 0;
};

// Nanoseconds since the beginning of 2001, UTC.
struct DateValue {
    int64_t ns = 0;
};

// The header of a SimpleBlock or Block.
struct BlockValue {
    uint64_t track = 0;    // TrackNumber
    int16_t timecode = 0;  // relative to the Cluster's
    uint8_t flags = 0;
    std::optional<int64_t> timeUs;  // with the Cluster's timecode, where one was met
    std::vector<uint64_t> frames;   // sizes; empty when the lacing cannot be decoded
};

using ElementValue = std::variant<std::monostate, uint64_t, int64_t, double, TextValue, BinaryValue, IdValue,
                                  DateValue, BlockValue>;

struct Element {
    uint32_t id = 0;
    const ElementInfo* info = nullptr;  // null for an unknown ID
    uint64_t offset = 0;                // of the header
    uint64_t dataOffset = 0;
    uint64_t size = 0;  // as declared; what was left of the file where it is unknown
    bool hasUnknownSize = false;
    uint64_t payloadEnd = 0;  // where its own size puts its end, at most 2^63 - 1
    uint64_t end = 0;         // where the reader goes on: never behind the parent's end
    ElementValue value;
    std::string meaning;             // of a number, for people; the walk leaves it empty
    std::vector<std::string> notes;  // what is wrong with it
};

// Bytes between two elements, or behind the last one, that hold none.
struct Gap {
    uint64_t offset = 0, end = 0;
    bool isResynchronised = false;  // the reader found an element behind it; otherwise it gave the parent up
};

struct WalkItem {
    unsigned depth = 0;  // 0 for the file's own children
    std::variant<Element, Gap> what;
};

}  // namespace mkvx
