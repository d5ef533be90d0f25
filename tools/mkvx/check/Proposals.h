// Which of the proposed commands a file's tracks allow. Each finding proposes what mends it for itself; a
// command writes all tracks anew, and some tracks do not come through it as they were.
#pragma once
#include <vector>

#include "check/Model.h"
#include "check/Tracks.h"

namespace mkvx {

// Takes away every command from a file with an encrypted track, which no muxer at hand copies as encrypted,
// and from one that holds nothing to copy; and what would mend seeking where there is nowhere to seek to.
// Where mkvmerge would leave a track out, ffmpeg's copy takes the place of its remux. Of a truncated file the
// first advice is to fetch it again. Call it when all
// findings are there; a second call changes nothing.
void settleProposals(const std::vector<JudgedTrack>& tracks, CheckedFile& checked);

}  // namespace mkvx
