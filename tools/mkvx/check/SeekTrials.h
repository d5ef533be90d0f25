// Seeks of each track, as a player's user makes them: which of them end the stream?
#pragma once
#include "check/Model.h"
#include "device/Session.h"

namespace mkvx {

// Of a file whose units were read. Tries the first video and audio tracks at the times that the index names,
// between them, and at either end, a bounded number of places; adds a finding to a track of which a seek in
// front of the duration ends the stream, whatever the reason.
void trySeeks(const Session& session, CheckedFile& checked);

}  // namespace mkvx
