// The plug-in's reasons for dropping a track as mkvx's own. For this room's readers only.
#pragma once
#include <optional>

#include "device/FileTrack.h"
#include "matroska/TrackDiscovery.h"

namespace mkvx {

// Nothing for DropReason::kNone.
std::optional<DropReason> dropReason(android::DropReason reason);

}  // namespace mkvx
