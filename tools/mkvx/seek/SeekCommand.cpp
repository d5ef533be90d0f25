// mkvx seek FILE: where each seek lands.
#include "base/Failure.h"
#include "base/Interrupt.h"
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
    std::vector<int64_t> targets;  // microseconds
    Format format = Format::kTable;
};

int run(const Globals& globals, const Options& options) {
    const Session session(loadPlugin(globals.plugin), options.file, globals.source);
    const TrackInfo* only = chosenTrack(session.info(), options.track);
    const auto listing = newSeekListing(options.format, options.file, stdout);
    const uint64_t seeks = seekTracks(session, only, options.targets, *listing);
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
    const auto addTarget = [options](int64_t us) {
        options->targets.push_back(us);
        return std::string();
    };
    addTimeOption(command, "--to", addTarget, "Where to seek; repeat it for more seeks on one source")
        .required()
        .repeatable();
    addFormatOption(command, options->format,
                    {{"table", Format::kTable}, {"json", Format::kJson}, {"jsonl", Format::kJsonLines}});
    command.footer("Example: mkvx seek --to 1:30 --to 5s film.mkv");
    command.action([&globals, options] { return run(globals, *options); });
}

}  // namespace mkvx
