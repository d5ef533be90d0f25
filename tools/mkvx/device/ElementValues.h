// What an element's bytes say, read with the reader's own value types. For this room's walk only.
#pragma once
#include "device/ElementWalk.h"
#include "matroska/reader/MatroskaReader.h"

namespace mkvx {

// Fills value and, where the plug-in would make nothing of it, notes. Reads at most a few hundred bytes and a
// block's lacing header; moves the file's position.
void readElementValue(MatroskaExtReader::CMatroskaNode* node, const ValueContext& context, Element& element);

}  // namespace mkvx
