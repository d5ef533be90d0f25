// mkvx chapters FILE: the chapters of each edition.
#include <fmt/format.h>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "base/Terminal.h"
#include "cli/Command.h"
#include "cli/SharedOptions.h"
#include "elements/Model.h"
#include "elements/OpenDocument.h"

namespace mkvx {
namespace {

struct Options {
    std::string file;
    Format format = Format::kTable;
};

int run(const Globals& globals, const Options& options) {
    const ChaptersReport report{options.file, openDocument(options.file, globals.source)->chapters()};
    throwIfInterrupted(options.file);
    print(report, options.format, stdout);
    if (report.chapters.editions.empty())
        tell(fmt::format("{}: has no chapters", options.file));
    else if (!report.chapters.isReached)
        tell(fmt::format("{}: nothing leads the plug-in to its chapters (mkvx tree shows where they are)",
                         options.file));
    return kExitDone;
}

}  // namespace

void addChaptersCommand(CommandLine& line, const Globals& globals) {
    auto options = std::make_shared<Options>();
    Arguments command = line.command("chapters", "The chapters of each edition");
    command.value("FILE", options->file, "The file to read").required();
    addFormatOption(command, options->format, {{"table", Format::kTable}, {"json", Format::kJson}});
    command.footer("Example: mkvx chapters film.mkv");
    command.action([&globals, options] { return run(globals, *options); });
}

}  // namespace mkvx
