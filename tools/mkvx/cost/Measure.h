// Measuring what it costs a player to open a file and to seek in it: the plug-in is driven through all
// stages, on a source that writes its reads into a ledger.
#pragma once
#include "cost/Model.h"
#include "device/Session.h"

namespace mkvx {

// A URL gets the ledger of a caching source alone, since no device reads one without. Throws FileFailure when
// the plug-in turns out to read in another way than this program's own reader, which tells the stages apart.
// After an interruption the ledgers hold the stages that were complete; throws Interrupted when none is.
CostReport measureCost(const Session& session, const CostOptions& options);

}  // namespace mkvx
