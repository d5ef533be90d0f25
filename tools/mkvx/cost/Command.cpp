// mkvx cost FILE: what opening, first units and seeks read, and how long that takes on a slow medium.
#include <CLI/CLI.hpp>
#include <cmath>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "base/Text.h"
#include "cli/Command.h"
#include "cli/FormatOption.h"
#include "cost/Model.h"
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

void addCostCommand(CLI::App& app, const Globals& globals, Action& chosen) {
    auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand("cost", "What opening and seeking read, and how long that takes");
    command->add_option("FILE", options->file, "The file or URL to read")->required();
    command->add_option("--latency", options->cost.latencyMs, "Milliseconds that each request takes")
        ->check(CLI::Range(0.0, 60000.0))
        ->capture_default_str();
    command
        ->add_option("--bandwidth", options->cost.megabytesPerSecond,
                     "Megabytes (1,000,000 bytes) that arrive in a second")
        ->check(CLI::Range(0.001, 1e6))
        ->capture_default_str();
    command->add_option("--seeks", options->cost.seeks, "How many seeks, spread over the duration")
        ->check(CLI::Range(size_t{0}, size_t{100000}))
        ->capture_default_str();
    command->add_flag("--demux", options->cost.demux, "Read every unit of every track as well");
    addProgressOption(*command, options->cost.progress);
    addFormatOption(*command, options->format, {{"table", Format::kTable}, {"json", Format::kJson}});
    command->footer("Example: mkvx cost --latency 80 --bandwidth 2 film.mkv");
    command->callback(
        [&globals, &chosen, options] { chosen = [&globals, options] { return run(globals, *options); }; });
}

}  // namespace mkvx
