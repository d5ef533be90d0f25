// Every unit that the plug-in delivers, one track's pass behind the other's.
#pragma once
#include <cstdint>
#include <limits>

#include "base/Listing.h"
#include "base/Progress.h"
#include "device/Session.h"

namespace mkvx {

struct PacketOptions {
    size_t limit = std::numeric_limits<size_t>::max();  // units per track
    bool all = false;                                   // go on past units that cannot be read
    ProgressStyle progress = ProgressStyle::kLine;
};

// Writes the units of `only`, or of every track where that is null, without finish(); returns how many. What
// cannot be read or cannot arrive is told on stderr. An interruption ends it.
uint64_t listPackets(const Session& session, const TrackInfo* only, const PacketOptions& options,
                     Listing<Unit>& out);

}  // namespace mkvx
