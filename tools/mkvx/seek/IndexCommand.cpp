// mkvx index FILE: the sync index, where it comes from, and where it is coarse.
#include "base/Failure.h"
#include "base/Interrupt.h"
#include "cli/Command.h"
#include "cli/SharedOptions.h"
#include "device/Session.h"
#include "seek/Index.h"
#include "seek/Model.h"

namespace mkvx {
namespace {

struct Options {
    std::string file;
    int64_t coarseUs = 10000000;
    Format format = Format::kTable;
};

int run(const Globals& globals, const Options& options) {
    const Session session(loadPlugin(globals.plugin), options.file, globals.source);
    CoarseIndex coarse{options.file, session.reader().index(), {}};
    throwIfInterrupted(options.file);
    coarse.gaps = gapsOf(coarse.index, options.coarseUs);
    print(coarse, options.format, stdout);
    return kExitDone;
}

}  // namespace

void addIndexCommand(CommandLine& line, const Globals& globals) {
    auto options = std::make_shared<Options>();
    Arguments command = line.command("index", "The sync index, its source, and where it is coarse");
    command.value("FILE", options->file, "The file to read").required();
    const auto setCoarse = [options](int64_t us) {
        options->coarseUs = us;
        return std::string(us < 0 ? "has to be 0 or more" : "");
    };
    addTimeOption(command, "--coarse", setCoarse, "Tell stretches without a sync point longer than this")
        .showDefault("10s");
    addFormatOption(command, options->format, {{"table", Format::kTable}, {"json", Format::kJson}});
    command.footer("Example: mkvx index --coarse 5s film.mkv");
    command.action([&globals, options] { return run(globals, *options); });
}

}  // namespace mkvx
