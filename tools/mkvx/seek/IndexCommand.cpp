// mkvx index FILE: the sync index, where it comes from, and where it is coarse.
#include <fmt/format.h>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "base/ParseTime.h"
#include "cli/Command.h"
#include "cli/SharedOptions.h"
#include "device/Session.h"
#include "seek/Index.h"
#include "seek/Model.h"

namespace mkvx {
namespace {

struct Options {
    std::string file;
    std::string coarse = "10000000";
    Format format = Format::kTable;
};

int run(const Globals& globals, const Options& options) {
    const auto coarseUs = parseTime(options.coarse);
    if (!coarseUs || *coarseUs < 0)
        throw UsageFailure(
            fmt::format("--coarse: {} is neither microseconds nor HH:MM:SS.mmm", options.coarse));
    const Session session(loadPlugin(globals.plugin), options.file, globals.source);
    CoarseIndex coarse{options.file, session.reader().index(), {}};
    throwIfInterrupted(options.file);
    coarse.gaps = gapsOf(coarse.index, *coarseUs);
    print(coarse, options.format, stdout);
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
