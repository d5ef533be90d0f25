#include "tracks/Model.h"

#include <fmt/format.h>
#include <cmath>

#include "base/Digest.h"
#include "base/Json.h"
#include "codecs/Json.h"

namespace mkvx {
namespace {

template <typename T>
void set(Json& object, const char* name, const std::optional<T>& value) {
    if (value) object[name] = *value;
}

const char* toString(DisplayUnit unit) {
    static const char* const kNames[] = {"pixels", "centimetres", "inches", "aspect_ratio", "unknown"};
    return kNames[size_t(unit)];
}

// Beside what the framework gets.
void addDeclared(Json& object, const DeclaredTrack& declared, bool isVideo) {
    object["default"] = declared.isDefault;
    object["forced"] = declared.isForced;
    if (isVideo) set(object, "frame_rate", declared.frameRate());
    if (declared.display)
        object["display"] = {{"width", declared.display->width},
                             {"height", declared.display->height},
                             {"unit", toString(declared.display->unit)}};
    if (declared.colour)
        object["colour"] = {{"primaries", declared.colour->primaries},
                            {"transfer", declared.colour->transfer},
                            {"matrix", declared.colour->matrix},
                            {"range", declared.colour->range}};
    set(object, "statistics_bit_rate", declared.statisticsBitRate);
}

void addRate(Json& object, const TrackRate& rate, bool isVideo) {
    object["payload_bytes"] = rate.bytes;
    object["frames"] = rate.frames;
    if (rate.bitRate()) object["measured_bit_rate"] = std::llround(*rate.bitRate());
    if (isVideo) set(object, "measured_frame_rate", rate.frameRate());
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

void printJson(const DescribedFile& file, std::FILE* out) {
    Json object = newResult();
    object["file"] = file.info.path;
    object["container_mime"] = file.info.containerMime;
    if (!file.title.empty()) object["title"] = file.title;
    if (!file.muxingApp.empty()) object["muxing_app"] = file.muxingApp;
    if (!file.writingApp.empty()) object["writing_app"] = file.writingApp;
    object["tracks"] = Json::array();
    for (const TrackInfo& track : file.info.tracks) {
        Json json = trackJson(track);
        if (const Json stream = toJson(file.streams[track.index]); !stream.empty()) json["stream"] = stream;
        const bool isVideo = track.kind == TrackKind::kVideo;
        const auto declared = file.declared.find(track.number);
        if (declared != file.declared.end()) addDeclared(json, declared->second, isVideo);
        if (file.rates && file.rates->count(track.number) > 0)
            addRate(json, file.rates->at(track.number), isVideo);
        object["tracks"].push_back(std::move(json));
    }
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
