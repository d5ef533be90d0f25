// mkvx mend FILE: everything that a command can mend, in one new file that is checked again.
#include "base/Failure.h"
#include "base/OutputFile.h"
#include "check/DecoderOptions.h"
#include "cli/Command.h"
#include "cli/SharedOptions.h"
#include "device/Plugin.h"
#include "mend/Mend.h"
#include "source/OpenSource.h"

namespace mkvx {
namespace {

struct Options {
    MendOptions mend;
    DecoderFiles decoders;
    Format format = Format::kTable;
};

int exitCodeOf(const MendReport& report) {
    if (report.after) return exitCodeOf(*report.after);
    const bool isFine = report.before == Verdict::kPlays || (report.isDryRun && !report.attempts.empty());
    return isFine ? kExitDone : kExitFileUnusable;
}

int run(const Globals& globals, Options& options) {
    MendOptions& mend = options.mend;
    if (isStandardInput(mend.file) || isUrl(mend.file))
        throw UsageFailure("mend takes a file by its path: other programs have to read it");
    requireOtherFile(mend.file, mend.output);
    mend.check.source = globals.source;
    mend.check.depth.decoders = readMeasure(options.decoders);
    const MendReport report = mendFile(loadPlugin(globals.plugin), mend);
    print(report, options.format, stdout);
    return exitCodeOf(report);
}

}  // namespace

void addMendCommand(CommandLine& line, const Globals& globals) {
    auto options = std::make_shared<Options>();
    MendOptions& mend = options->mend;
    mend.check.timeLimit = 600;
    Arguments command = line.command(
        "mend", "Carry out all remedies of a file at once, into a new file that is checked again");
    command.value("FILE", mend.file, "The file to mend").required();
    command.value("-o,--output", mend.output, "The file to write, which must not be there yet").required();
    command.flag("--dry-run", mend.isDryRun, "Only say what would be run, and what stays");
    command
        .value("--time-limit", mend.check.timeLimit,
               "Seconds after which an examination is given up; the writing has no limit")
        .within(0.01, 1e6)
        .showDefault();
    addDecoderOptions(command, options->decoders);
    addProgressOption(command, mend.check.progress);
    addFormatOption(command, options->format, {{"text", Format::kTable}, {"json", Format::kJson}});
    command.footer("Example: mkvx mend film.mkv -o mended.mkv");
    command.action([&globals, options] { return run(globals, *options); });
}

}  // namespace mkvx
