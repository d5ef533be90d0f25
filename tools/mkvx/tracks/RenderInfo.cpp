#include <fmt/format.h>

#include "base/Digest.h"
#include "base/Json.h"
#include "base/Text.h"
#include "tracks/Render.h"

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

Json infoJson(const FileInfo& info) {
    Json object = newResult();
    object["container_mime"] = info.containerMime;
    object["tracks"] = Json::array();
    for (const TrackInfo& track : info.tracks) object["tracks"].push_back(trackJson(track));
    return object;
}

std::string formatColumn(const TrackInfo& track) {
    if (track.width && track.height) return fmt::format("{}x{}", *track.width, *track.height);
    if (track.sampleRate && track.channels)
        return fmt::format("{} Hz, {} ch", *track.sampleRate, *track.channels);
    return {};
}

std::string configColumn(const TrackInfo& track) {
    std::string text;
    for (const ConfigRecord& record : track.config)
        text += fmt::format("{}{} {} B", text.empty() ? "" : ", ", record.key, record.bytes.size());
    return text;
}

std::string rateColumn(const TrackInfo& track) {
    return track.bitRate ? fmt::format("{:.1f}", *track.bitRate / 1000.0) : std::string();
}

std::string timeColumn(const std::optional<int64_t>& us) {
    return us ? clockTime(*us) : std::string();
}

std::string infoTable(const FileInfo& info) {
    using Align = TextTable::Align;
    TextTable table({{"INDEX", Align::kRight},
                     {"NUMBER", Align::kRight},
                     {"TYPE"},
                     {"MIME"},
                     {"FORMAT"},
                     {"LANGUAGE"},
                     {"DURATION", Align::kRight},
                     {"KBIT/S", Align::kRight},
                     {"THUMBNAIL", Align::kRight},
                     {"CONFIGURATION"}});
    for (const TrackInfo& track : info.tracks)
        table.addRow({std::to_string(track.index), std::to_string(track.number), toString(track.kind),
                      printable(track.mime), formatColumn(track), printable(track.language.value_or("")),
                      timeColumn(track.durationUs), rateColumn(track), timeColumn(track.thumbnailUs),
                      configColumn(track)});
    return table.str();
}

std::string sniffTable(const std::vector<SniffResult>& results) {
    TextTable table({{"CLAIMED AS"}, {"CONFIDENCE", TextTable::Align::kRight}, {"FILE"}});
    for (const SniffResult& result : results)
        table.addRow({result.claimed ? result.mime : "not claimed",
                      result.claimed ? fmt::format("{:.2f}", result.confidence) : std::string(),
                      printable(result.path)});
    return table.str();
}

Json sniffJson(const SniffResult& result) {
    Json object = newResult();
    object["file"] = result.path;
    object["claimed"] = result.claimed;
    if (result.claimed) {
        object["mime"] = result.mime;
        // Through the shortest decimal of the single-precision value: 0.91, not 0.9100000262260437.
        object["confidence"] = std::stod(fmt::format("{}", result.confidence));
    }
    return object;
}

}  // namespace

void renderInfo(const FileInfo& info, Format format, std::FILE* out) {
    if (format == Format::kJson)
        fmt::print(out, "{}\n", dump(infoJson(info)));
    else
        fmt::print(out, "{}: {}\n{}", printable(info.path), printable(info.containerMime), infoTable(info));
}

void renderSniff(const std::vector<SniffResult>& results, Format format, std::FILE* out) {
    if (format == Format::kTable) fmt::print(out, "{}", sniffTable(results));
    if (format == Format::kJson)
        for (const SniffResult& result : results) fmt::print(out, "{}\n", dump(sniffJson(result)));
}

}  // namespace mkvx
