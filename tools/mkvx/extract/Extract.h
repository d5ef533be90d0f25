// One track of a file, written as a stream or file that ordinary tools open.
#pragma once
#include <string>

#include "base/Progress.h"
#include "device/Session.h"
#include "extract/Model.h"

namespace mkvx {

// Writes every unit that can be read to `output`; how many cannot is told on stderr. Throws FileFailure for a
// track that has no such form or delivers nothing, and for what cannot be written. An interruption completes
// the file with what there is; before the first unit it is thrown.
ExtractedTrack extractTrack(const Session& session, const TrackInfo& track, const std::string& output,
                            ProgressStyle progress);

}  // namespace mkvx
