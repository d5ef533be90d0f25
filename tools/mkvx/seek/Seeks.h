// Seeking about in a file, as a player's user does.
#pragma once
#include <cstdint>
#include <vector>

#include "base/Listing.h"
#include "device/Session.h"
#include "seek/Model.h"

namespace mkvx {

// Seeks in `only`, or in every video and audio track where that is null: to all times in their order on one
// source a track. Writes where each lands, without finish(); returns how many. An interruption ends it.
uint64_t seekTracks(const Session& session, const TrackInfo* only, const std::vector<int64_t>& timesUs,
                    Listing<SeekProbe>& out);

}  // namespace mkvx
