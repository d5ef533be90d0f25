// mkvx help [COMMAND]: what --help tells; and hidden, the manual page and the shells' completion, for the
// build to install.
#include <fmt/format.h>
#include <memory>

#include "base/Failure.h"
#include "cli/Command.h"
#include "cli/HelpModel.h"

namespace mkvx {
namespace {

struct Options {
    std::string command;
    bool isManual = false;
    std::string shell;
};

int run(const CommandLine& line, const Options& options) {
    const CommandHelp help = describeHelp(line);
    if (options.isManual)
        fmt::print("{}", renderManual(help, MKVX_VERSION));
    else if (options.shell == "bash")
        fmt::print("{}", renderBashCompletion(help));
    else if (options.shell == "zsh")
        fmt::print("{}", renderZshCompletion(help));
    else
        fmt::print("{}", options.command.empty() ? line.help() : line.help(options.command));
    return kExitDone;
}

}  // namespace

void addHelpCommand(CommandLine& line) {
    auto options = std::make_shared<Options>();
    Arguments command = line.command("help", "The help texts in other forms");
    command.hide();
    command.value("COMMAND", options->command, "The command to tell of");
    command.flag("--man", options->isManual, "A manual page");
    command.value("--completion", options->shell, "What a shell completes command lines by")
        .oneOf({"bash", "zsh"});
    command.footer("Example: mkvx help --man");
    command.action([&line, options] { return run(line, *options); });
}

}  // namespace mkvx
