// An explanation, or all of them, as text or as one JSON object.
#pragma once
#include <cstdio>

#include "base/Format.h"
#include "elements/Explain.h"

namespace mkvx {

// kTable (text) or kJson.
void renderExplanation(const Explanation& explanation, Format format, std::FILE* out);

// Every element of the table, kTable or kJson.
void renderElementTable(Format format, std::FILE* out);

}  // namespace mkvx
