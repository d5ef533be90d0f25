// Whether a Vorbis decoder can begin with what a track's MetaData has for it, by the reference library.
#pragma once
#include <cstdint>
#include <vector>

namespace mkvx {

using Bytes = std::vector<uint8_t>;

// `identification` and `setup` are whole headers that may be anything. False too for codebooks that can be
// read and describe no code.
bool isVorbisSetupUsable(const Bytes& identification, const Bytes& setup);

}  // namespace mkvx
