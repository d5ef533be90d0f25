// mkvx cost FILE: what opening, first units and seeks read, and how long that takes on a slow medium.
#include <cmath>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "base/Text.h"
#include "cli/Command.h"
#include "cli/SharedOptions.h"
#include "cost/Measure.h"
#include "device/Session.h"

namespace mkvx {
namespace {

struct Options {
    std::string file;
    CostOptions cost;
    Format format = Format::kTable;
};

int run(const Globals& globals, Options options) {
    options.cost.blockSize = size_t(globals.source.url.blockKib) * 1024;
    options.cost.cacheSize = uint64_t(globals.source.url.cacheMib) << 20;
    const Session session(loadPlugin(globals.plugin), options.file, globals.source);
    const CostReport report = measureCost(session, options.cost);
    print(report, options.format, stdout);
    throwIfInterrupted(options.file, counted(report.ledgers.size(), "ledger"));
    return kExitDone;
}

}  // namespace

void addCostCommand(CommandLine& line, const Globals& globals) {
    auto options = std::make_shared<Options>();
    Arguments command = line.command("cost", "What opening and seeking read, and how long that takes");
    command.value("FILE", options->file, "The file or URL to read").required();
    command.value("--latency", options->cost.latencyMs, "Milliseconds that each request takes")
        .within(0.0, 60000.0)
        .showDefault();
    command
        .value("--bandwidth", options->cost.megabytesPerSecond,
               "Megabytes (1,000,000 bytes) that arrive in a second")
        .within(0.001, 1e6)
        .showDefault();
    command.value("--seeks", options->cost.seeks, "How many seeks, spread over the duration")
        .within(size_t{0}, size_t{100000})
        .showDefault();
    command.flag("--demux", options->cost.demux, "Read every unit of every track as well");
    addProgressOption(command, options->cost.progress);
    addFormatOption(command, options->format, {{"table", Format::kTable}, {"json", Format::kJson}});
    command.footer("Example: mkvx cost --latency 80 --bandwidth 2 film.mkv");
    command.action([&globals, options] { return run(globals, *options); });
}

}  // namespace mkvx
