// mkvx seek FILE: where each seek lands.
#include <fmt/format.h>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "base/ParseTime.h"
#include "base/Text.h"
#include "cli/Command.h"
#include "cli/SharedOptions.h"
#include "device/Session.h"
#include "seek/Model.h"
#include "seek/Seeks.h"

namespace mkvx {
namespace {

struct Options {
    std::string file;
    std::optional<TrackChoice> track;
    std::vector<std::string> targets;
    Format format = Format::kTable;
};

std::vector<int64_t> parseTargets(const std::vector<std::string>& texts) {
    std::vector<int64_t> times;
    for (const std::string& text : texts) {
        const auto time = parseTime(text);
        if (!time) throw UsageFailure(fmt::format("--to: {} is neither microseconds nor HH:MM:SS.mmm", text));
        times.push_back(*time);
    }
    return times;
}

int run(const Globals& globals, const Options& options) {
    const std::vector<int64_t> times = parseTargets(options.targets);
    const Session session(loadPlugin(globals.plugin), options.file, globals.source);
    const TrackInfo* only = chosenTrack(session.info(), options.track);
    const auto listing = newSeekListing(options.format, options.file, stdout);
    const uint64_t seeks = seekTracks(session, only, times, *listing);
    listing->finish();
    throwIfInterrupted(options.file, counted(seeks, "seek"));
    return kExitDone;
}

}  // namespace

void addSeekCommand(CommandLine& line, const Globals& globals) {
    auto options = std::make_shared<Options>();
    Arguments command = line.command("seek", "Where each seek lands: the first unit after it");
    command.value("FILE", options->file, "The file to read").required();
    addTrackOption(command, options->track, "Only this track, not every video and audio track");
    command
        .value("--to", options->targets,
               "Where to seek: microseconds or HH:MM:SS.mmm; repeat it for more seeks on one source")
        .required()
        .repeatable();
    addFormatOption(command, options->format,
                    {{"table", Format::kTable}, {"json", Format::kJson}, {"jsonl", Format::kJsonLines}});
    command.footer("Example: mkvx seek --to 00:01:30.000 --to 5000000 film.mkv");
    command.action([&globals, options] { return run(globals, *options); });
}

}  // namespace mkvx
