// Which decoder takes a stream, and what keeps the others from it.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "codecs/StreamFacts.h"
#include "decoders/CodecList.h"
#include "decoders/Profiles.h"

namespace mkvx {

// What a track asks of a decoder. 0 or empty: not known, and nothing is asked.
struct Demand {
    std::string mime;
    StreamFacts stream;    // with the track's own sizes and rates where the stream has none
    uint64_t bitRate = 0;  // bits a second, on average
};

// Which of them keeps a stream from a decoder.
enum class Obstacle { kNothing, kMime, kLimit, kProfile };

struct Fit {
    Obstacle obstacle = Obstacle::kNothing;
    std::string decoder;   // that takes it
    std::string sentence;  // why none does: "OMX.x: 1920x1080 is more than 1280x720"; empty otherwise
};

// The decoders of a device.
Fit fitDecoders(const CodecList& list, const ProfileTable& profiles, const Demand& demand);
// Software decoders of that era, by the table alone.
Fit fitProfiles(const ProfileTable& profiles, const Demand& demand);

// The framework itself has no name for this MIME type: decoders for it are their vendor's own.
bool isVendorMime(const std::string& mime);

}  // namespace mkvx
