// Units that no decoder can take, told by their first bytes.
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>

namespace mkvx {

// "has no VP9 frame marker"; null where the first bytes tell nothing against it, which for many codecs they
// never do. `mime` is the plug-in's; the unit is as delivered and may be anything.
const char* unitFault(const std::string& mime, const uint8_t* data, size_t size);

}  // namespace mkvx
