// What the number in an element means to people.
#pragma once
#include "device/ElementWalk.h"

namespace mkvx {

// Reads the value of the element that the walk gave last, and says what it means: "video", "00:00:02.000".
void readMeaningfully(ElementWalk& walk, Element& element);

}  // namespace mkvx
