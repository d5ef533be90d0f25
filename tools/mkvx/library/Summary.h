// All that is to be told of a library in few lines.
#pragma once
#include "library/Judged.h"
#include "library/Model.h"

namespace mkvx {

// Lists at most so many files.
Summary summaryOf(const JudgedFiles& judged, size_t mostListed);

}  // namespace mkvx
