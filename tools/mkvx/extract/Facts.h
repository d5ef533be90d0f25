// Collecting what is known of a track before it is written.
#pragma once
#include "device/Model.h"
#include "device/Session.h"
#include "extract/Writer.h"

namespace mkvx {

// With what the plug-in's interface does not tell: CodecID, CodecPrivate, bit depth.
ExtractTrack factsOf(const Session& session, const TrackInfo& info);

// The bytes of the configuration record with that key; empty without one.
Bytes configOf(const TrackInfo& info, const char* key);

}  // namespace mkvx
