// The result model of the element tree: what the reader makes of a file's bytes, one item after the other in
// file order. Filled by ElementWalk and ElementValues, printed by RenderTree and RenderExplain.
//
// Offsets and sizes are bytes of the file; times are timecode units unless a name says otherwise. Texts are
// the bytes of the file, cut to a bound, and need not be valid UTF-8. Plain values: copy freely.
#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "matroska/reader/ElementIds.h"

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
    const MatroskaExtReader::ElementInfo* info = nullptr;  // null for an unknown one
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
    const MatroskaExtReader::ElementInfo* info = nullptr;  // null for an unknown ID
    uint64_t offset = 0;                                   // of the header
    uint64_t dataOffset = 0;
    uint64_t size = 0;  // as declared; what was left of the file where it is unknown
    bool hasUnknownSize = false;
    uint64_t end = 0;  // where the reader goes on: never behind the parent's end
    ElementValue value;
    std::string meaning;             // of a number, for people: "video", "00:00:02.000"
    std::vector<std::string> notes;  // what is wrong with it
};

// Bytes between two elements, or behind the last one, that hold none.
struct Gap {
    uint64_t offset = 0, end = 0;
    bool isResynchronised = false;  // the reader found an element behind it; otherwise it gave the parent up
};

// Items that were left out of a listing: how many of which name, in the order in which they were first met.
struct LeftOut {
    uint64_t offset = 0, end = 0;
    std::vector<std::pair<std::string, uint64_t>> counts;
};

struct TreeItem {
    unsigned depth = 0;  // 0 for the file's own children
    std::variant<Element, Gap, LeftOut> what;
    bool isAsked = false;  // holds the byte that was asked for
};

// "0x1A45DFA3"
std::string idText(uint32_t id);
// The table's name, or "unknown ID 0x…".
std::string nameOf(const Element& element);
// "master", "uint", ...; "unknown" for null.
const char* typeName(const MatroskaExtReader::ElementInfo* info);
// Does the format let `id` stand below `parent` (0: the file itself)? True for what the table does not know.
bool belongsIn(const MatroskaExtReader::ElementInfo* info, uint32_t parent);

}  // namespace mkvx
