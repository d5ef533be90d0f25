// mkvx report FILE: what a device gets out of a file, as one page for a browser.
#include <fmt/format.h>
#include <algorithm>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "base/OutputFile.h"
#include "check/Run.h"
#include "check/DecoderOptions.h"
#include "cli/Command.h"
#include "cli/SharedOptions.h"
#include "report/Collect.h"
#include "report/Page.h"
#include "source/OpenSource.h"
#include "source/Spool.h"

namespace mkvx {
namespace {

struct Options {
    std::string file;
    std::string out;
    CheckRunOptions check;
    DecoderFiles decoders;
};

// In a child process: the file may end whoever reads it.
CheckedFile examined(const ExtractorPlugin& plugin, const std::string& file, const CheckRunOptions& options) {
    CheckedFile checked;
    const bool isComplete = checkFiles(plugin, {{file, 0}}, options,
                                       [&](size_t, CheckedFile result) { checked = std::move(result); });
    if (!isComplete) throwIfInterrupted(file);
    if (checked.verdict == Verdict::kNoMatroska || checked.verdict == Verdict::kUnreadable)
        throw FileFailure(file, checked.reason);
    return checked;
}

std::string offersText(const CheckedFile& checked) {
    if (checked.tracks.empty()) return "no track known";
    const auto offered = std::count_if(checked.tracks.begin(), checked.tracks.end(),
                                       [](const TrackVerdict& track) { return track.isOffered(); });
    return fmt::format("{} of {} tracks offered", offered, checked.tracks.size());
}

int run(const Globals& globals, const Options& options) {
    requireOtherFile(options.file, options.out);
    CheckRunOptions check = options.check;
    check.source = globals.source;
    check.depth.decoders = readMeasure(options.decoders);
    if (isStandardInput(options.file)) (void)spooledInput();  // before there is a child to share it
    const ExtractorPlugin plugin = loadPlugin(globals.plugin);
    const ReportPage page =
        collectReport(plugin, examined(plugin, options.file, check), check.source, check.progress);
    throwIfInterrupted(options.file);  // nothing was written yet, and half a page would tell what is not so
    ExtractFile out(options.out);
    out.write(reportHtml(page));
    out.close();
    fmt::print("{}: {}, {}, {} bytes\n", options.out, describe(page.checked.verdict),
               offersText(page.checked), out.size());
    return kExitDone;
}

}  // namespace

void addReportCommand(CommandLine& line, const Globals& globals) {
    auto options = std::make_shared<Options>();
    options->check.timeLimit = 600;
    Arguments command =
        line.command("report", "A page for the browser: tracks, timeline, seeks, chapters, damage");
    command.value("FILE", options->file, "The file to read").required();
    command.value("-o,--output", options->out, "The HTML file to write").required();
    command
        .value("--time-limit", options->check.timeLimit,
               "Seconds after which the examination is given up and the page shows no more than the verdict")
        .within(0.01, 1e6)
        .showDefault();
    addDecoderOptions(command, options->decoders);
    addProgressOption(command, options->check.progress);
    command.footer("Example: mkvx report film.mkv -o film.html");
    command.action([&globals, options] { return run(globals, *options); });
}

}  // namespace mkvx
