// Files whose blocks lie in many different ways, for comparing two ways of reading them. The same on every
// machine.
#pragma once

#include <string>
#include <vector>

#include "support/EbmlWriter.h"

namespace testing_support {

struct Shape {
    std::string name;
    Bytes bytes;
    int64_t durationUs = 0;
};

std::vector<Shape> AllShapes();

}  // namespace testing_support
