// mkvx late FILE: what a player gets that says it is late.
#include <fmt/format.h>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "cli/Command.h"
#include "cli/SharedOptions.h"
#include "device/Session.h"
#include "seek/Landing.h"

namespace mkvx {
namespace {

struct Options {
    std::string file;
    std::optional<TrackChoice> track;
    size_t at = 0;
    int64_t byUs = 0;
    Format format = Format::kTable;
};

// The unit with that index, after the units in front of it were read on time.
Landing readAt(const Session& session, const Options& options, const TrackInfo& track, int64_t byUs) {
    LandingProbe probe(session, track);
    for (size_t i = 0; i < options.at; ++i)
        if (!probe.read(nullptr).unit) {
            throwIfInterrupted(options.file);
            throw UsageFailure(fmt::format("{}: index {} has only {} (--at counts them from 0)", options.file,
                                           track.index, counted(i, "unit")));
        }
    android::MediaSource::ReadOptions late;
    late.setLateBy(byUs);
    return probe.read(&late);
}

void print(const Options& options, const TrackInfo& track, const Landing& onTime, const Landing& late) {
    if (options.format != Format::kTable) {
        Json object = newResult();
        object["track"] = track.index;
        object["at"] = options.at;
        object["by_us"] = options.byUs;
        object["due_us"] = onTime.unit ? Json(onTime.unit->timeUs) : Json(nullptr);
        addLanding(object, late);
        fmt::print("{}\n", dump(object));
        return;
    }
    constexpr auto kRight = TextTable::Align::kRight;
    TextTable table(
        landingColumns({{"INDEX", kRight}, {"UNIT", kRight}, {"LATE (ms)", kRight}, {"DUE", kRight}}));
    addLandingRow(table,
                  {std::to_string(track.index), std::to_string(options.at),
                   std::to_string(options.byUs / 1000), onTime.unit ? clockTime(onTime.unit->timeUs) : "end"},
                  late);
    fmt::print("{}", table.str());
}

int run(const Globals& globals, const Options& options) {
    const Session session(loadPlugin(globals.plugin), options.file, globals.source);
    const TrackInfo& track = requireTrack(session.info(), *options.track);
    if (track.kind == TrackKind::kSubtitle)
        throw UsageFailure(
            fmt::format("{}: index {} is a subtitle track, which skips nothing (--track takes a video or "
                        "audio track)",
                        options.file, track.index));
    const Landing onTime = readAt(session, options, track, 0);
    const Landing late = readAt(session, options, track, options.byUs);
    throwIfInterrupted(options.file);
    print(options, track, onTime, late);
    return kExitDone;
}

}  // namespace

void addLateCommand(CommandLine& line, const Globals& globals) {
    auto options = std::make_shared<Options>();
    Arguments command = line.command("late", "What a player gets that says how late it is");
    command.value("FILE", options->file, "The file to read").required();
    addTrackOption(command, options->track, "The track to read").required();
    command.value("--at", options->at, "Be late at the unit with this index, from 0").required();
    command.value("--by", options->byUs, "How late, in microseconds").required();
    addFormatOption(command, options->format,
                    {{"table", Format::kTable}, {"json", Format::kJson}, {"jsonl", Format::kJsonLines}});
    command.footer("Example: mkvx late --track 0 --at 20 --by 500000 film.mkv");
    command.action([&globals, options] { return run(globals, *options); });
}

}  // namespace mkvx
