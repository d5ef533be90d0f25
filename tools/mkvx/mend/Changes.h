// Two examinations compared: of a file, and of what became of it.
#pragma once
#include "check/Plan.h"
#include "mend/Model.h"

namespace mkvx {

// Every finding of a file.
std::vector<FindingOfTrack> allFindings(const CheckedFile& checked);

// `after` is a file that was made by `plan` from `before`: its tracks are told by their place among their
// kind. Fewer units of a track that was copied, and tracks that are missing, count as findings that came:
// "fewer_units", "track_missing".
MendChanges changesOf(const CheckedFile& before, const CheckedFile& after, const MendPlan& plan);

}  // namespace mkvx
