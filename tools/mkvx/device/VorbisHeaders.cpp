#include "device/VorbisHeaders.h"

#include "matroska/CodecPrivate.h"

namespace mkvx {

std::optional<VorbisRefusal> vorbisRefusal(const Bytes& codecPrivate) {
    const char* condition = "";
    if (android::VorbisHeadersAccepted(codecPrivate.data(), codecPrivate.size(), &condition))
        return std::nullopt;
    return VorbisRefusal{condition, android::VorbisLacesAreLong(codecPrivate.data(), codecPrivate.size())};
}

}  // namespace mkvx
