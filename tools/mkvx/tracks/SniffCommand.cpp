// mkvx sniff FILE...: would the plug-in claim these files, and how sure is it?
#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "base/Text.h"
#include "cli/Command.h"
#include "cli/FormatOption.h"
#include "device/Session.h"
#include "tracks/Render.h"

namespace mkvx {
namespace {

struct Options {
    std::vector<std::string> files;
    Format format = Format::kTable;
};

int run(const Globals& globals, const Options& options) {
    const ExtractorPlugin plugin = loadPlugin(globals.plugin);
    std::vector<SniffResult> results;
    std::vector<std::string> complaints;
    for (const std::string& file : options.files) {
        if (wasInterrupted()) break;
        try {
            results.push_back(sniffFile(plugin, file, globals.source));
            if (!results.back().claimed) complaints.push_back(file + ": is no Matroska or WebM file");
        } catch (const Interrupted&) {
            break;
        } catch (const FileFailure& failure) {
            complaints.push_back(failure.what());
        }
    }
    renderSniff(results, options.format, stdout);
    std::fflush(stdout);
    for (const std::string& complaint : complaints) fmt::print(stderr, "mkvx: {}\n", complaint);
    throwIfInterrupted(options.files.front(),
                       fmt::format("{} of {}", results.size(), counted(options.files.size(), "file")));
    return complaints.empty() ? kExitDone : kExitFileUnusable;
}

}  // namespace

void addSniffCommand(CLI::App& app, const Globals& globals, Action& chosen) {
    auto options = std::make_shared<Options>();
    CLI::App* command =
        app.add_subcommand("sniff", "Would the plug-in claim these files, and how sure is it?");
    command->add_option("FILE", options->files, "Files to sniff")->required();
    addFormatOption(*command, options->format, {{"table", Format::kTable}, {"json", Format::kJson}});
    command->footer("Example: mkvx sniff *.mkv *.webm");
    command->callback(
        [&globals, &chosen, options] { chosen = [&globals, options] { return run(globals, *options); }; });
}

}  // namespace mkvx
