#include "seek/Model.h"

#include <fmt/format.h>

#include "base/Text.h"

namespace mkvx {
namespace {

constexpr auto kRight = TextTable::Align::kRight;

// ---- landings

// With the columns that all landings share behind the first ones.
std::vector<TextTable::Column> landingColumns(std::vector<TextTable::Column> first) {
    for (const char* title : {"LANDED", "KEY", "SIZE", "READS", "BYTES READ"})
        first.push_back({title, kRight});
    first.push_back({"SHA-1"});
    return first;
}

void addLandingRow(TextTable& table, std::vector<std::string> first, const Landing& landing) {
    const auto& unit = landing.unit;
    first.insert(first.end(), {unit ? clockTime(unit->timeUs) : "end", unit && unit->sync ? "key" : "",
                               unit ? std::to_string(unit->size) : "", std::to_string(landing.reads),
                               std::to_string(landing.readBytes), unit ? unit->sha1 : ""});
    table.addRow(std::move(first));
}

// ---- seeks

std::string awayText(const SeekProbe& seek) {
    if (!seek.landing.unit) return "";
    const auto away = uint64_t(seek.landing.unit->timeUs) - uint64_t(seek.targetUs);  // extremes wrap
    return fmt::format("{:+}", int64_t(away) / 1000);
}

// ---- the sync index

const char* describeSource(const IndexReport& report) {
    if (report.isStreamed) return "for a source that caches a network stream gets none";
    if (report.source == "cues") return "from the file's Cues";
    return report.source == "scan" ? "from a scan of the Clusters, for there are no Cues" : "there is none";
}

std::string entryTable(const std::vector<IndexEntry>& entries) {
    TextTable table({{"TIME", kRight}, {"POSITION", kRight}});
    for (const IndexEntry& entry : entries)
        table.addRow({clockTime(entry.timeUs), std::to_string(entry.position)});
    return table.str();
}

}  // namespace

void printText(const SeekReport& report, std::FILE* out) {
    TextTable table(landingColumns({{"INDEX", kRight}, {"TARGET", kRight}, {"AWAY (ms)", kRight}}));
    for (const SeekProbe& seek : report.seeks)
        addLandingRow(table, {std::to_string(seek.track), clockTime(seek.targetUs), awayText(seek)},
                      seek.landing);
    fmt::print(out, "{}", table.str());
}

void printText(const LateReport& report, std::FILE* out) {
    TextTable table(
        landingColumns({{"INDEX", kRight}, {"UNIT", kRight}, {"LATE (ms)", kRight}, {"DUE", kRight}}));
    addLandingRow(table,
                  {std::to_string(report.track), std::to_string(report.at),
                   std::to_string(report.byUs / 1000), report.dueUs ? clockTime(*report.dueUs) : "end"},
                  report.landing);
    fmt::print(out, "{}", table.str());
}

void printText(const CoarseIndex& coarse, std::FILE* out) {
    const IndexReport& index = coarse.index;
    fmt::print(out, "Sync index: {} entries, {}; duration {}\n", index.entries.size(), describeSource(index),
               clockTime(index.durationUs));
    fmt::print(out, "Seeking: {} of {} cue points name the master track (track number {})\n",
               index.masterPoints, index.points, index.masterTrack);
    fmt::print(out, "{}", entryTable(index.entries));
    for (const IndexGap& gap : coarse.gaps)
        fmt::print(out, "Coarse: no sync point from {} to {}\n", clockTime(gap.fromUs), clockTime(gap.toUs));
}

}  // namespace mkvx
