// An explanation as text or as one JSON object.
#pragma once
#include <cstdio>

#include "ExplainModel.h"
#include "Render.h"

namespace mkvx {

// kTable (text) or kJson.
void renderExplanation(const Explanation& explanation, Format format, std::FILE* out);

}  // namespace mkvx
