// Names, types and places of elements, as everything that mkvx prints has them. The table is the reader's.
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>

#include "device/ElementIds.h"
#include "matroska/reader/ElementTable.h"

namespace mkvx {

// All rows, with elements behind their parents.
struct ElementRows {
    static constexpr size_t kCount = MatroskaExtReader::kElementCount;

    static constexpr const ElementInfo& at(size_t place) { return MatroskaExtReader::kElements[place]; }
    const ElementInfo* begin() const;
    const ElementInfo* end() const { return begin() + kCount; }
};

// Null for an ID that is in no table.
const ElementInfo* findElement(uint32_t id);

// "0x1A45DFA3"
std::string idText(uint32_t id);
// The table's name, or "unknown ID 0x...": the one way to name an element that is unknown.
std::string elementName(uint32_t id);
// Where elements are counted by their names: that of all unknown ones together.
constexpr const char* kUnknownElements = "unknown element";
std::string elementKind(uint32_t id);

bool isMaster(const ElementInfo* info);
// "master", "uint", ...; "unknown" for null.
const char* typeName(const ElementInfo* info);
// Does the format let the element stand below `parent` (0: the file itself)? True for null.
bool belongsIn(const ElementInfo* info, uint32_t parent);

}  // namespace mkvx
