// mkvx diff OLD NEW: two runs of check over the same files.
#include "base/Failure.h"
#include "cli/Command.h"
#include "cli/SharedOptions.h"
#include "library/Difference.h"

namespace mkvx {
namespace {

struct Options {
    std::string before, after;
    Format format = Format::kTable;
};

int run(const Options& options) {
    try {
        const LibraryDifference difference =
            differenceOf(readJudged({options.before}), readJudged({options.after}));
        print(difference, options.format, stdout);
        return difference.files.empty() ? kExitSame : kExitDiffers;
    } catch (const FileFailure& failure) {
        throw UsageFailure(failure.what());  // 1 says that they differ
    }
}

}  // namespace

void addDiffCommand(CommandLine& line) {
    auto options = std::make_shared<Options>();
    Arguments command = line.command("diff", "Two runs of check: what got better or worse, is new or gone");
    command.value("OLD", options->before, "Results of mkvx check: JSON lines or JSON").required();
    command.value("NEW", options->after, "The same of a later run").required();
    addFormatOption(command, options->format, {{"text", Format::kTable}, {"json", Format::kJson}});
    command.footer(
        "Exit codes: 0 the same, 1 something differs, 2 a file cannot be read.\n"
        "Example: mkvx diff before.jsonl after.jsonl");
    command.action([options] { return run(*options); });
}

}  // namespace mkvx
