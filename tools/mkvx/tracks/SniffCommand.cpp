// mkvx sniff FILE...: would the plug-in claim these files, and how sure is it?
#include <fmt/format.h>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "base/Terminal.h"
#include "base/Text.h"
#include "cli/Command.h"
#include "cli/SharedOptions.h"
#include "tracks/Model.h"
#include "tracks/Sniff.h"

namespace mkvx {
namespace {

struct Options {
    std::vector<std::string> files;
    Format format = Format::kTable;
};

int run(const Globals& globals, const Options& options) {
    const SniffRun sniffed = sniffFiles(loadPlugin(globals.plugin), options.files, globals.source);
    const auto listing = newSniffListing(options.format, stdout);
    for (const SniffResult& result : sniffed.results) listing->write(result);
    listing->finish();
    std::fflush(stdout);
    for (const std::string& complaint : sniffed.complaints) tell(complaint);
    throwIfInterrupted(options.files.front(), fmt::format("{} of {}", sniffed.results.size(),
                                                          counted(options.files.size(), "file")));
    return sniffed.complaints.empty() ? kExitDone : kExitFileUnusable;
}

}  // namespace

void addSniffCommand(CommandLine& line, const Globals& globals) {
    auto options = std::make_shared<Options>();
    Arguments command = line.command("sniff", "Would the plug-in claim these files, and how sure is it?");
    command.value("FILE", options->files, "Files to sniff").required();
    addFormatOption(command, options->format, {{"table", Format::kTable}, {"json", Format::kJson}});
    command.footer("Example: mkvx sniff *.mkv *.webm");
    command.action([&globals, options] { return run(globals, *options); });
}

}  // namespace mkvx
