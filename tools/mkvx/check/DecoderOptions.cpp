#include "check/DecoderOptions.h"

namespace mkvx {

void addDecoderOptions(Arguments& command, DecoderFiles& files) {
    command.value(
        "--device", files.device,
        "Measure by the decoders of this device: its media_codecs.xml, with what that includes beside it");
    command.value("--profiles", files.profiles,
                  "Which profiles its decoders take, in JSON (docs/schemas/profiles.schema.json)");
}

std::shared_ptr<const DecoderMeasure> readMeasure(const DecoderFiles& files) {
    auto measure = std::make_shared<DecoderMeasure>();
    if (!files.device.empty()) measure->device = readCodecList(files.device);
    if (!files.profiles.empty()) measure->profiles = readProfiles(files.profiles);
    return measure;
}

}  // namespace mkvx
