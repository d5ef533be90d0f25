// mkvx extract FILE: one track as a stream or file that ordinary tools open.
#include <fmt/format.h>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "base/OutputFile.h"
#include "base/Text.h"
#include "cli/Command.h"
#include "cli/SharedOptions.h"
#include "device/Session.h"
#include "extract/Extract.h"

namespace mkvx {
namespace {

struct Options {
    std::string file;
    std::optional<TrackChoice> track;
    std::string out;
    ProgressStyle progress = ProgressStyle::kLine;
    Format format = Format::kTable;
};

int run(const Globals& globals, const Options& options) {
    const Session session(loadPlugin(globals.plugin), options.file, globals.source);
    const TrackInfo& track = requireTrack(session.info(), *options.track);
    requireOtherFile(options.file, options.out);
    const ExtractedTrack done = extractTrack(session, track, options.out, options.progress);
    print(done, options.format, stdout);
    throwIfInterrupted(options.file,
                       fmt::format("{}, which {} holds", counted(done.units, "unit"), options.out));
    return kExitDone;
}

}  // namespace

void addExtractCommand(CommandLine& line, const Globals& globals) {
    auto options = std::make_shared<Options>();
    Arguments command = line.command("extract", "One track as a stream or file that ordinary tools open");
    command.value("FILE", options->file, "The file to read").required();
    addTrackOption(command, options->track, "The track to write").required();
    command.value("-o,--output", options->out, "The file to write").required();
    addProgressOption(command, options->progress);
    addFormatOption(command, options->format, {{"text", Format::kTable}, {"json", Format::kJson}});
    command.footer("Example: mkvx extract --track 1 -o film.aac film.mkv");
    command.action([&globals, options] { return run(globals, *options); });
}

}  // namespace mkvx
