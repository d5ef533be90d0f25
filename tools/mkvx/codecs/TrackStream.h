// What the stream of an offered track says of itself.
#pragma once
#include "codecs/StreamFacts.h"
#include "device/Session.h"

namespace mkvx {

// What the plug-in hands out as configuration, and the file's CodecPrivate.
StreamConfig streamConfig(const TrackInfo& track, const Bytes& codecPrivate);

// By the configuration; where that tells no profile and sample format, of video by the first unit too, which
// is read from a source of its own.
StreamFacts readStreamFacts(const Session& session, const TrackInfo& track);

}  // namespace mkvx
