// mkvx help, hidden: the manual page and the shells' completion, for the build to install.
#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "base/Failure.h"
#include "cli/Command.h"
#include "cli/HelpModel.h"

namespace mkvx {
namespace {

struct Options {
    bool isManual = false;
    std::string shell;
};

int run(const CLI::App& app, const Options& options) {
    const CommandHelp help = describeHelp(app);
    if (options.isManual)
        fmt::print("{}", renderManual(help, MKVX_VERSION));
    else if (options.shell == "bash")
        fmt::print("{}", renderBashCompletion(help));
    else if (options.shell == "zsh")
        fmt::print("{}", renderZshCompletion(help));
    else
        fmt::print("{}", app.help());
    return kExitDone;
}

}  // namespace

void addHelpCommand(CLI::App& app, Action& chosen) {
    auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand("help", "The help texts in other forms");
    command->group("");
    command->add_flag("--man", options->isManual, "A manual page");
    command->add_option("--completion", options->shell, "What a shell completes command lines by")
        ->check(CLI::IsMember({"bash", "zsh"}));
    command->footer("Example: mkvx help --man");
    command->callback([&app, &chosen, options] { chosen = [&app, options] { return run(app, *options); }; });
}

}  // namespace mkvx
