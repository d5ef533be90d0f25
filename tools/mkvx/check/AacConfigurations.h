// AAC configurations on which the AAC decoder of Lollipop devices and this machine's differ. The plug-in asks
// the one that it runs with, and what is found on a desk would otherwise be taken for what a device does.
#pragma once
#include <optional>
#include <string>

#include "device/AudioConfig.h"

namespace mkvx {

// What a device's decoder makes of this AudioSpecificConfig, and what follows from it; nothing where both
// agree.
std::optional<std::string> judgedOtherwiseOnDevice(const Bytes& config);

}  // namespace mkvx
