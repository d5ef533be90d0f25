#include "decode/Model.h"

#include <fmt/format.h>

#include "base/Text.h"

namespace mkvx {
namespace {

std::vector<std::string> rowOf(const DecodedTrack& track) {
    return {std::to_string(track.index),
            toString(track.kind),
            printable(track.mime),
            track.decoder.empty() ? "none" : track.decoder,
            std::to_string(track.units),
            std::to_string(track.frames),
            track.kind == TrackKind::kAudio ? std::to_string(track.samples) : std::string(),
            std::to_string(track.errors),
            printable(track.problem)};
}

}  // namespace

void printText(const DecodedFile& decoded, std::FILE* out) {
    using Align = TextTable::Align;
    TextTable text({{"INDEX", Align::kRight},
                    {"TYPE"},
                    {"MIME"},
                    {"DECODER"},
                    {"UNITS", Align::kRight},
                    {"FRAMES", Align::kRight},
                    {"SAMPLES", Align::kRight},
                    {"ERRORS", Align::kRight},
                    {"PROBLEM"}});
    for (const DecodedTrack& track : decoded.tracks) text.addRow(rowOf(track));
    fmt::print(out, "{}", text.str());
}

}  // namespace mkvx
