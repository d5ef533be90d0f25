// The options by which commands that examine files learn what decoders a device has.
#pragma once
#include <memory>
#include <string>

#include "check/Decoders.h"
#include "cli/Arguments.h"

namespace mkvx {

struct DecoderFiles {
    std::string device, profiles;  // paths; empty: none
};

// Adds --device and --profiles.
void addDecoderOptions(Arguments& command, DecoderFiles& files);
// Throws FileFailure for a file that is none of its kind.
std::shared_ptr<const DecoderMeasure> readMeasure(const DecoderFiles& files);

}  // namespace mkvx
