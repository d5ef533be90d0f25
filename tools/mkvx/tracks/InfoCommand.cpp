// mkvx info FILE: the container and the tracks that the plug-in offers.
#include <fmt/format.h>

#include "base/Failure.h"
#include "cli/Command.h"
#include "cli/SharedOptions.h"
#include "device/Session.h"
#include "tracks/Model.h"

namespace mkvx {
namespace {

struct Options {
    std::string file;
    Format format = Format::kTable;
};

int run(const Globals& globals, const Options& options) {
    const Session session(loadPlugin(globals.plugin), options.file, globals.source);
    print(session.info(), options.format, stdout);
    if (session.info().tracks.empty())
        fmt::print(stderr, "mkvx: {}: none of its {} tracks is offered\n", options.file,
                   session.reader().head().trackCount());
    return kExitDone;
}

}  // namespace

void addInfoCommand(CommandLine& line, const Globals& globals) {
    auto options = std::make_shared<Options>();
    Arguments command = line.command("info", "The container and the tracks that the plug-in offers");
    command.value("FILE", options->file, "The file to describe").required();
    addFormatOption(command, options->format, {{"table", Format::kTable}, {"json", Format::kJson}});
    command.footer("Example: mkvx info --format json film.mkv");
    command.action([&globals, options] { return run(globals, *options); });
}

}  // namespace mkvx
