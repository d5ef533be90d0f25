#include "seek/Model.h"

#include <fmt/format.h>

#include "base/Json.h"
#include "base/Text.h"

namespace mkvx {
namespace {

Json unitJson(const std::optional<Unit>& unit) {
    if (!unit) return nullptr;
    return {{"time_us", unit->timeUs}, {"sync", int(unit->sync)}, {"size", unit->size}, {"sha1", unit->sha1}};
}

// The members that the JSON of all landings ends with.
void addLanding(Json& object, const Landing& landing) {
    object["landed"] = unitJson(landing.unit);
    object["reads"] = landing.reads;
    object["read_bytes"] = landing.readBytes;
}

Json seekJson(const SeekProbe& seek, Json object) {
    object["track"] = seek.track;
    object["target_us"] = seek.targetUs;
    addLanding(object, seek.landing);
    return object;
}

Json gapsJson(const std::vector<IndexGap>& gaps) {
    Json list = Json::array();
    for (const IndexGap& gap : gaps) list.push_back({{"from_us", gap.fromUs}, {"to_us", gap.toUs}});
    return list;
}

}  // namespace

void printJson(const SeekProbe& seek, std::FILE* out) {
    fmt::print(out, "{}", dump(seekJson(seek, newResult())));
}

void printJson(const SeekReport& report, std::FILE* out) {
    Json result = newResult();
    result["file"] = report.file;
    result["seeks"] = Json::array();
    for (const SeekProbe& seek : report.seeks) result["seeks"].push_back(seekJson(seek, {}));
    fmt::print(out, "{}", dump(result));
}

void printJson(const LateReport& report, std::FILE* out) {
    Json object = newResult();
    object["track"] = report.track;
    object["at"] = report.at;
    object["by_us"] = report.byUs;
    object["due_us"] = report.dueUs ? Json(*report.dueUs) : Json(nullptr);
    addLanding(object, report.landing);
    fmt::print(out, "{}", dump(object));
}

void printJson(const CoarseIndex& coarse, std::FILE* out) {
    const IndexReport& index = coarse.index;
    Json json = newResult();
    json["file"] = printable(coarse.file);
    json["source"] = index.source;
    json["duration_us"] = index.durationUs;
    json["master_track"] = index.masterTrack;
    json["points"] = index.points;
    json["master_points"] = index.masterPoints;
    json["entries"] = Json::array();
    for (const IndexEntry& entry : index.entries)
        json["entries"].push_back({{"time_us", entry.timeUs}, {"position", entry.position}});
    json["coarse"] = gapsJson(coarse.gaps);
    fmt::print(out, "{}", dump(json));
}

}  // namespace mkvx
