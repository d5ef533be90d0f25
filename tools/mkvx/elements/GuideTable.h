// The rows of ElementGuide: one for each element of the table, in its order.
#pragma once
#include <cstddef>

#include "elements/Guide.h"

namespace mkvx {

const ElementGuide* elementGuides(size_t* count);

}  // namespace mkvx
