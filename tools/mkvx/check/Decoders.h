// Whether a device's decoders take what is offered: those of its own list, or else software decoders of that
// era.
#pragma once
#include <optional>

#include "check/Tracks.h"
#include "decoders/CodecList.h"
#include "decoders/Profiles.h"

namespace mkvx {

struct DecoderMeasure {
    std::optional<CodecList> device;  // absent: software decoders of the era, by the table alone
    ProfileTable profiles = eraProfiles();
};

// Of an offered track of video or audio, whose stream is known as far as it will be. What keeps a decoder of
// the device from it is mute; what is said of the era in general is a note. Other tracks are left alone.
void judgeDecoders(const DecoderMeasure& measure, const FileHead& head, const std::string& path,
                   const TrackInfo& offer, const JudgedTrack& track);

}  // namespace mkvx
