// Elements as text: what the tree and its explanations have in common, and what JSON says in the same words.
// Texts of the file come out printable.
#pragma once
#include <string>
#include <vector>

#include "device/Element.h"

namespace mkvx {

// The value and its meaning: "2 (audio)", "\"und\"", "Cues (0x1C53BB6B)", "track 1, +40 (00:00:02.040), key,
// 2975 B"; empty for a master and where none was read.
std::string valueText(const Element& element);
// "4 bytes", "1 byte", "size unknown"
std::string sizeText(const Element& element);
// "01 64 00 1F"
std::string hexBytes(const std::vector<uint8_t>& bytes);
// ISO 8601, with as many decimals as it takes.
std::string dateText(DateValue date);

}  // namespace mkvx
