// AudioSpecificConfig, the configuration of AAC and its kin: ISO/IEC 14496-3, 1.6.2.1.
//
// Pure functions over bytes that come from a file and may be anything; bits behind the end are read as 0.
#pragma once
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace mkvx {

using Bytes = std::vector<uint8_t>;

// Table 1.18: Hz by samplingFrequencyIndex.
constexpr std::array<uint32_t, 13> kAacFrequencies = {96000, 88200, 64000, 48000, 44100, 32000, 24000,
                                                      22050, 16000, 12000, 11025, 8000,  7350};

struct AudioConfig {
    uint32_t objectType = 0;  // audioObjectType, table 1.17: 2 LC, 5 SBR, 29 PS ...
    uint32_t coreType = 0;    // the same, but for SBR and PS, which name what they are built upon
    uint32_t frequency = 0;   // of the core, Hz; 0 for a reserved index
    uint32_t channels = 0;    // channelConfiguration; 0: not told here
    bool isCut = false;       // the bytes end before the last of these
};

AudioConfig audioConfig(const Bytes& bytes);

// Whether the AAC decoder that the plug-in asks, which is this machine's, refuses the configuration as one
// of a format that it cannot decode. Reads the bytes as the plug-in does.
bool isRefusedHere(const Bytes& bytes);

}  // namespace mkvx
