// Elements as text and as JSON: what the tree and its explanations have in common. Texts of the file come out
// printable.
#pragma once
#include <string>

#include "base/Json.h"
#include "elements/Model.h"

namespace mkvx {

// The value and its meaning: "2 (audio)", "\"und\"", "Cues (0x1C53BB6B)", "track 1, +40 (00:00:02.040), key,
// 2975 B"; empty for a master and where none was read.
std::string valueText(const Element& element);
// "4 bytes", "1 byte", "size unknown"
std::string sizeText(const Element& element);
// "01 64 00 1F"
std::string hexBytes(const std::vector<uint8_t>& bytes);

// The members offset, header, size, end, id, name, type, value, meaning, block and notes, where they apply.
Json elementJson(const Element& element);

}  // namespace mkvx
