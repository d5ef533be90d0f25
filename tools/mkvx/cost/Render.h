// The costs as a table or as JSON.
#pragma once
#include <cstdio>

#include "base/Format.h"
#include "cost/Model.h"

namespace mkvx {

// kTable or kJson.
void renderCost(const CostReport& report, Format format, std::FILE* out);

}  // namespace mkvx
