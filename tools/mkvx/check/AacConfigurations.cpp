#include "check/AacConfigurations.h"

#include <fmt/format.h>
#include <algorithm>

namespace mkvx {
namespace {

bool always(const AudioConfig&) {
    return true;
}

// Only written out can it be so: no index stands for one.
bool isFrequencyAboveAll(const AudioConfig& config) {
    return config.frequency > kAacFrequencies.front();
}

bool hasNoChannels(const AudioConfig& config) {
    return config.channels == 0;
}

bool endsBeforeCore(const AudioConfig& config) {
    return config.isCut;
}

// What the decoder of the Lollipop line was seen to answer, of all object types, frequencies and channel
// configurations, where another one answered otherwise: docs/device.md has the same table.
struct Judgement {
    uint32_t objectType;
    const char* name;
    bool (*applies)(const AudioConfig&);
    bool isRefused;  // on a device
};
constexpr Judgement kOnDevice[] = {
    {1, "Main", isFrequencyAboveAll, true},
    {3, "SSR", isFrequencyAboveAll, true},
    {5, "SBR", endsBeforeCore, false},
    {6, "scalable", always, true},
    {17, "ER LC", hasNoChannels, false},
    {20, "ER scalable", always, false},
    {22, "ER BSAC", always, true},
    {23, "ER LD", hasNoChannels, false},
    {29, "PS", endsBeforeCore, false},
    {39, "ER ELD", hasNoChannels, false},
    {42, "USAC", always, true},
};

}  // namespace

std::optional<std::string> judgedOtherwiseOnDevice(const Bytes& bytes) {
    const AudioConfig config = audioConfig(bytes);
    const auto* found = std::find_if(std::begin(kOnDevice), std::end(kOnDevice), [&](const Judgement& row) {
        return row.objectType == config.objectType && row.applies(config);
    });
    if (found == std::end(kOnDevice) || found->isRefused == isRefusedHere(bytes)) return std::nullopt;
    const std::string what = fmt::format("its configuration (object type {}, {}{})", found->objectType,
                                         found->name, config.isCut ? ", cut off" : "");
    if (found->isRefused)
        return fmt::format(
            "a Lollipop device's AAC decoder refuses {}, and the one here does not: there the plug-in asks "
            "the "
            "platform's codec library for another decoder",
            what);
    return fmt::format(
        "a Lollipop device's AAC decoder does not refuse {}, and the one here does: there the plug-in does "
        "not "
        "ask the platform's codec library for another decoder",
        what);
}

}  // namespace mkvx
