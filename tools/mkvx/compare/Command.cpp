// mkvx compare --plugin OTHER FILE...: files in the hands of two builds of the plug-in.
#include "base/Failure.h"
#include "base/Interrupt.h"
#include "cli/Command.h"
#include "cli/SharedOptions.h"
#include "compare/Compare.h"
#include "source/OpenSource.h"
#include "source/Spool.h"

namespace mkvx {
namespace {

struct Options {
    std::vector<std::string> files;
    CompareOptions compare;
    Format format = Format::kTable;
};

int run(const Globals& globals, Options& options) {
    if (globals.plugin.empty())
        throw UsageFailure("--plugin takes the build to compare with (mkvx compare --help tells more)");
    options.compare.other = globals.plugin;
    options.compare.source = globals.source;
    const auto listing = newComparedListing(options.format, stdout);
    bool isSame = true;
    for (const std::string& file : options.files) {
        try {
            if (isStandardInput(file)) (void)spooledInput();  // before there are children to share it
            const ComparedFile compared = compareFile(file, options.compare);
            isSame = isSame && compared.differences.empty();
            listing->write(compared);
        } catch (const FileFailure& failure) {
            throw UsageFailure(failure.what());  // 1 says that something differs
        }
    }
    listing->finish();
    return isSame ? kExitSame : kExitDiffers;
}

}  // namespace

void addCompareCommand(CommandLine& line, const Globals& globals) {
    auto options = std::make_shared<Options>();
    CompareOptions& compare = options->compare;
    Arguments command =
        line.command("compare", "The same files through two builds of the plug-in: what differs first");
    command.value("FILE", options->files, "Files to read").required();
    command.value("--base", compare.base, "The build that --plugin is compared with")
        .showDefault("the one beside this program");
    command.value("--seeks", compare.seeks, "Seeks a video or audio track, beside those to its ends")
        .within(size_t{0}, size_t{100000})
        .showDefault();
    command.value("--time-limit", compare.timeLimit, "Seconds a file").within(0.01, 1e6).showDefault();
    addFormatOption(command, options->format, {{"text", Format::kTable}, {"json", Format::kJsonLines}});
    command.footer(
        "Exit codes: 0 all the same, 1 something differs, 2 a file or plug-in cannot be used.\n"
        "Example: mkvx compare --plugin other.so film.mkv");
    command.action([&globals, options] { return run(globals, *options); });
}

}  // namespace mkvx
