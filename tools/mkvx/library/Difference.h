// What became of a library between two runs.
#pragma once
#include "library/Judged.h"
#include "library/Model.h"

namespace mkvx {

// A file is better or worse by its verdict, else by findings of more weight than a note that went or came;
// changed where some went and some came, or notes did.
LibraryDifference differenceOf(const JudgedFiles& before, const JudgedFiles& after);

}  // namespace mkvx
