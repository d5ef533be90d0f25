#include "decode/Model.h"

#include <fmt/format.h>

#include "base/Json.h"

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

}  // namespace

void printJson(const DecodedFile& decoded, std::FILE* out) {
    Json object = newResult();
    object["tracks"] = Json::array();
    for (const DecodedTrack& track : decoded.tracks) object["tracks"].push_back(trackJson(track));
    fmt::print(out, "{}", dump(object));
}

}  // namespace mkvx
