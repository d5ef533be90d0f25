// mkvx info FILE: the container and the tracks that the plug-in offers.
#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "base/Failure.h"
#include "cli/Command.h"
#include "cli/FormatOption.h"
#include "device/Session.h"
#include "tracks/Render.h"

namespace mkvx {
namespace {

struct Options {
    std::string file;
    Format format = Format::kTable;
};

int run(const Globals& globals, const Options& options) {
    const Session session(loadPlugin(globals.plugin), options.file, globals.source);
    renderInfo(session.info(), options.format, stdout);
    if (session.info().tracks.empty())
        fmt::print(stderr, "mkvx: {}: none of its {} tracks is offered\n", options.file,
                   session.reader().entryCount());
    return kExitDone;
}

}  // namespace

void addInfoCommand(CLI::App& app, const Globals& globals, Action& chosen) {
    auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand("info", "The container and the tracks that the plug-in offers");
    command->add_option("FILE", options->file, "The file to describe")->required();
    addFormatOption(*command, options->format, {{"table", Format::kTable}, {"json", Format::kJson}});
    command->footer("Example: mkvx info --format json film.mkv");
    command->callback(
        [&globals, &chosen, options] { chosen = [&globals, options] { return run(globals, *options); }; });
}

}  // namespace mkvx
