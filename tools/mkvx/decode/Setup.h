// What a decoder is set up from, as a track's MetaData holds it.
#pragma once
#include <media/stagefright/MetaData.h>

#include "decode/Protocol.h"

namespace mkvx {

// Without what the caller asks for: frames and outputs.
TrackSetup setupFrom(android::MetaData& format);

}  // namespace mkvx
