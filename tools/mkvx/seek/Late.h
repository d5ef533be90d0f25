// A player that says how late it is.
#pragma once
#include <cstddef>
#include <cstdint>

#include "device/Session.h"
#include "seek/Model.h"

namespace mkvx {

// Reads a video or audio track up to its unit `at`, counted from 0, and that one late by `byUs`. Throws
// UsageFailure where the track has fewer units, and Interrupted.
LateReport readLate(const Session& session, const TrackInfo& track, size_t at, int64_t byUs);

}  // namespace mkvx
