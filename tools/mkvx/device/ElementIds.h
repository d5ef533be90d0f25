// The reader's element IDs and its table of elements, under mkvx's own roof: `id::kCluster`, ElementInfo.
#pragma once
#include "matroska/reader/ElementIds.h"

namespace mkvx {

namespace id = MatroskaExtReader::id;
using MatroskaExtReader::ElementInfo;
using MatroskaExtReader::ElementType;

}  // namespace mkvx
