#include "tracks/Model.h"

#include <fmt/format.h>

#include "base/Digest.h"
#include "base/Json.h"

namespace mkvx {
namespace {

template <typename T>
void set(Json& object, const char* name, const std::optional<T>& value) {
    if (value) object[name] = *value;
}

Json trackJson(const TrackInfo& track) {
    Json object;
    object["index"] = track.index;
    object["number"] = track.number;
    object["type"] = toString(track.kind);
    object["mime"] = track.mime;
    set(object, "width", track.width);
    set(object, "height", track.height);
    set(object, "sample_rate", track.sampleRate);
    set(object, "channels", track.channels);
    set(object, "language", track.language);
    set(object, "duration_us", track.durationUs);
    set(object, "bit_rate", track.bitRate);
    set(object, "thumbnail_us", track.thumbnailUs);
    for (const ConfigRecord& record : track.config)
        object["config"][record.key] = toHex(record.bytes.data(), record.bytes.size());
    return object;
}

}  // namespace

void printJson(const FileInfo& info, std::FILE* out) {
    Json object = newResult();
    object["container_mime"] = info.containerMime;
    object["tracks"] = Json::array();
    for (const TrackInfo& track : info.tracks) object["tracks"].push_back(trackJson(track));
    fmt::print(out, "{}", dump(object));
}

std::string openUnitsJson(const std::string& file) {
    Json head = newResult();
    head["file"] = file;
    return openResult(head, "units");
}

// Numbers and hex digits only: nothing needs escaping. There may be millions of them, so that a unit neither
// becomes a tree of values first nor carries the version of the format.
void printJson(const Unit& unit, std::FILE* out) {
    fmt::print(out, R"({{"track":{},"number":{},"time_us":{},"sync":{},"size":{},"sha1":"{}")", unit.track,
               unit.number, unit.timeUs, int(unit.sync), unit.size, unit.sha1);
    if (unit.endUs) fmt::print(out, R"(,"end_us":{})", *unit.endUs);
    fmt::print(out, "}}");
}

void printJson(const SniffResult& result, std::FILE* out) {
    Json object = newResult();
    object["file"] = result.path;
    object["claimed"] = result.claimed;
    if (result.claimed) {
        object["mime"] = result.mime;
        // Through the shortest decimal of the single-precision value: 0.91, not 0.9100000262260437.
        object["confidence"] = std::stod(fmt::format("{}", result.confidence));
    }
    fmt::print(out, "{}", dump(object));
}

}  // namespace mkvx
