// What the plug-in thinks of a Vorbis track's CodecPrivate. A pure function over bytes that may be anything.
#pragma once
#include <optional>
#include <string>

#include "device/CodecRecords.h"

namespace mkvx {

// Why the plug-in ends the process over a Vorbis track's CodecPrivate.
struct VorbisRefusal {
    std::string condition;      // that does not hold, as its source has it
    bool isHeaderLong = false;  // the headers may be sound: one of the first two has 255 bytes or more
};
// Nothing when it takes them.
std::optional<VorbisRefusal> vorbisRefusal(const Bytes& codecPrivate);

}  // namespace mkvx
