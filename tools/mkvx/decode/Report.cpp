#include "decode/Report.h"

#include <fmt/format.h>

#include "base/Json.h"
#include "base/Text.h"

namespace mkvx {
namespace {

Json trackJson(const DecodedTrack& track) {
    Json object;
    object["track"] = track.index;
    object["type"] = toString(track.kind);
    object["mime"] = track.mime;
    object["decoder"] = track.decoder.empty() ? Json(nullptr) : Json(track.decoder);
    object["units"] = track.units;
    object["frames"] = track.frames;
    if (track.kind == TrackKind::kAudio) object["samples"] = track.samples;
    object["errors"] = track.errors;
    if (!track.sha1.empty()) object["sha1"] = track.sha1;
    if (!track.problem.empty()) object["problem"] = track.problem;
    return object;
}

std::string table(const std::vector<DecodedTrack>& tracks) {
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
    for (const DecodedTrack& track : tracks)
        text.addRow({std::to_string(track.index), toString(track.kind), printable(track.mime),
                     track.decoder.empty() ? "none" : track.decoder, std::to_string(track.units),
                     std::to_string(track.frames),
                     track.kind == TrackKind::kAudio ? std::to_string(track.samples) : std::string(),
                     std::to_string(track.errors), printable(track.problem)});
    return text.str();
}

}  // namespace

void renderDecoded(const std::vector<DecodedTrack>& tracks, Format format, std::FILE* out) {
    if (format == Format::kTable) {
        fmt::print(out, "{}", table(tracks));
        return;
    }
    Json object = newResult();
    object["tracks"] = Json::array();
    for (const DecodedTrack& track : tracks) object["tracks"].push_back(trackJson(track));
    fmt::print(out, "{}\n", dump(object));
}

}  // namespace mkvx
