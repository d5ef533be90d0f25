// mkvx sniff FILE...: would the plug-in claim these files, and how sure is it?
#include <fmt/format.h>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "base/Text.h"
#include "cli/Command.h"
#include "cli/SharedOptions.h"
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
            if (wasInterrupted()) break;  // it may be the interruption's doing
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

void addSniffCommand(CommandLine& line, const Globals& globals) {
    auto options = std::make_shared<Options>();
    Arguments command = line.command("sniff", "Would the plug-in claim these files, and how sure is it?");
    command.value("FILE", options->files, "Files to sniff").required();
    addFormatOption(command, options->format, {{"table", Format::kTable}, {"json", Format::kJson}});
    command.footer("Example: mkvx sniff *.mkv *.webm");
    command.action([&globals, options] { return run(globals, *options); });
}

}  // namespace mkvx
