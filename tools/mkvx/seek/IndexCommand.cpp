// mkvx index FILE: the sync index, where it comes from, and where it is coarse.
#include <fmt/format.h>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "base/Json.h"
#include "base/Text.h"
#include "cli/Command.h"
#include "cli/SharedOptions.h"
#include "device/Session.h"
#include "seek/Index.h"
#include "seek/Landing.h"

namespace mkvx {
namespace {

struct Options {
    std::string file;
    std::string coarse = "10000000";
    Format format = Format::kTable;
};

void printJson(const Options& options, const IndexReport& report, const std::vector<IndexGap>& gaps) {
    Json json = newResult();
    json["file"] = printable(options.file);
    json["source"] = report.source;
    json["duration_us"] = report.durationUs;
    json["master_track"] = report.masterTrack;
    json["points"] = report.points;
    json["master_points"] = report.masterPoints;
    json["entries"] = Json::array();
    for (const IndexEntry& entry : report.entries)
        json["entries"].push_back({{"time_us", entry.timeUs}, {"position", entry.position}});
    json["coarse"] = Json::array();
    for (const IndexGap& gap : gaps) json["coarse"].push_back({{"from_us", gap.fromUs}, {"to_us", gap.toUs}});
    fmt::print("{}\n", dump(json));
}

const char* describeSource(const IndexReport& report) {
    if (report.isStreamed) return "for a source that caches a network stream gets none";
    if (report.source == "cues") return "from the file's Cues";
    return report.source == "scan" ? "from a scan of the Clusters, for there are no Cues" : "there is none";
}

void printTable(const IndexReport& report, const std::vector<IndexGap>& gaps) {
    fmt::print("Sync index: {} entries, {}; duration {}\n", report.entries.size(), describeSource(report),
               clockTime(report.durationUs));
    fmt::print("Seeking: {} of {} cue points name the master track (track number {})\n", report.masterPoints,
               report.points, report.masterTrack);
    TextTable table({{"TIME", TextTable::Align::kRight}, {"POSITION", TextTable::Align::kRight}});
    for (const IndexEntry& entry : report.entries)
        table.addRow({clockTime(entry.timeUs), std::to_string(entry.position)});
    fmt::print("{}", table.str());
    for (const IndexGap& gap : gaps)
        fmt::print("Coarse: no sync point from {} to {}\n", clockTime(gap.fromUs), clockTime(gap.toUs));
}

int run(const Globals& globals, const Options& options) {
    const auto coarseUs = parseTime(options.coarse);
    if (!coarseUs || *coarseUs < 0)
        throw UsageFailure(
            fmt::format("--coarse: {} is neither microseconds nor HH:MM:SS.mmm", options.coarse));
    const Session session(loadPlugin(globals.plugin), options.file, globals.source);
    const IndexReport report = session.reader().index();
    throwIfInterrupted(options.file);
    const std::vector<IndexGap> gaps = gapsOf(report, *coarseUs);
    if (options.format == Format::kJson)
        printJson(options, report, gaps);
    else
        printTable(report, gaps);
    return kExitDone;
}

}  // namespace

void addIndexCommand(CommandLine& line, const Globals& globals) {
    auto options = std::make_shared<Options>();
    Arguments command = line.command("index", "The sync index, its source, and where it is coarse");
    command.value("FILE", options->file, "The file to read").required();
    command
        .value("--coarse", options->coarse,
               "Tell stretches without a sync point longer than this (microseconds or HH:MM:SS.mmm)")
        .showDefault();
    addFormatOption(command, options->format, {{"table", Format::kTable}, {"json", Format::kJson}});
    command.footer("Example: mkvx index --coarse 00:00:05 film.mkv");
    command.action([&globals, options] { return run(globals, *options); });
}

}  // namespace mkvx
