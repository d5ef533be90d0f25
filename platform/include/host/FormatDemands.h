// What the framework demands of a track's metadata when it turns it into a codec's format: a player that sets
// up a decoder goes through that, and what does not hold there ends the process, not only the track.
//
// The host has no codecs and so no such conversion; this says in advance how it would end.
#pragma once

#include <optional>
#include <string>

#include <utils/RefBase.h>

#include <media/stagefright/MetaData.h>

namespace android {
namespace host {

struct FormatRefusal {
    bool aborts;       // the process ends; otherwise the track alone is refused
    uint32_t key;      // whose value is at fault
    std::string what;  // a sentence without a full stop
};

// Nothing when the metadata is taken. Bytes in it may be anything.
[[gnu::warn_unused_result]] std::optional<FormatRefusal> FindFormatRefusal(const sp<MetaData>& meta);

}  // namespace host
}  // namespace android
