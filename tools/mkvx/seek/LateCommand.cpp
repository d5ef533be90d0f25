// mkvx late FILE: what a player gets that says it is late.
#include <fmt/format.h>

#include "base/Failure.h"
#include "cli/Command.h"
#include "cli/SharedOptions.h"
#include "device/Session.h"
#include "seek/Late.h"
#include "seek/Model.h"

namespace mkvx {
namespace {

struct Options {
    std::string file;
    std::optional<TrackChoice> track;
    size_t at = 0;
    int64_t byUs = 0;
    Format format = Format::kTable;
};

int run(const Globals& globals, const Options& options) {
    const Session session(loadPlugin(globals.plugin), options.file, globals.source);
    const TrackInfo& track = requireTrack(session.info(), *options.track);
    if (track.kind == TrackKind::kSubtitle)
        throw UsageFailure(
            fmt::format("{}: index {} is a subtitle track, which skips nothing (--track takes a video or "
                        "audio track)",
                        options.file, track.index));
    print(readLate(session, track, options.at, options.byUs), options.format, stdout);
    return kExitDone;
}

}  // namespace

void addLateCommand(CommandLine& line, const Globals& globals) {
    auto options = std::make_shared<Options>();
    Arguments command = line.command("late", "What a player gets that says how late it is");
    command.value("FILE", options->file, "The file to read").required();
    addTrackOption(command, options->track, "The track to read").required();
    command.value("--at", options->at, "Be late at the unit with this index, from 0").required();
    const auto setLateness = [options](int64_t us) {
        options->byUs = us;
        return std::string();
    };
    addTimeOption(command, "--by", setLateness, "How late").required();
    addFormatOption(command, options->format,
                    {{"table", Format::kTable}, {"json", Format::kJson}, {"jsonl", Format::kJsonLines}});
    command.footer("Example: mkvx late --track 0 --at 20 --by 0.5s film.mkv");
    command.action([&globals, options] { return run(globals, *options); });
}

}  // namespace mkvx
