// One pass over a file that hands out every unit of one track.
#pragma once
#include <functional>

#include "device/Session.h"
#include "device/TrackReader.h"

namespace mkvx {

struct PassedUnit {
    android::MediaBuffer& buffer;
    uint64_t position;       // in the file, of the payload of the block that it came from; 0 for a subtitle
    size_t unreadableSoFar;  // units of this track that could not be read, up to here
};

// Calls `take` for each unit, going on past those that cannot be read; returns how many those were. For a
// subtitle track the master track is read, and what arrives meanwhile is taken; without a source for the
// master track no subtitle arrives, which is a FileFailure. The file bounds the pass, and an interruption
// ends it.
size_t passOver(const Session& session, const TrackInfo& track,
                const std::function<void(const PassedUnit&)>& take);

}  // namespace mkvx
