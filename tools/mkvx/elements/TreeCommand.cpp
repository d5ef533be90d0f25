// mkvx tree FILE: the element tree as the plug-in's reader walks it.
#include <fmt/format.h>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "base/Log.h"
#include "base/Progress.h"
#include "cli/Command.h"
#include "cli/SharedOptions.h"
#include "elements/Tree.h"
#include "source/MatroskaSource.h"

namespace mkvx {
namespace {

struct Options {
    std::string file;
    TreeOptions tree;
    bool isWhole = false;
    Format format = Format::kTable;
    ProgressStyle progress = ProgressStyle::kLine;
};

int run(const Globals& globals, const Options& options) {
    const MuteLog mute;
    TreeOptions tree = options.tree;
    tree.isShortened = !options.isWhole && (!tree.depth || tree.at);
    Progress progress(options.file, besideListing(options.progress));
    ProgressState reached;
    tree.onReached = [&](uint64_t offset) {
        reached.bytes = offset;
        progress.reach(reached);
    };
    TreeReader items(openMatroska(options.file, globals.source), options.file, tree);
    reached.bytesTotal = items.fileLength().value_or(0);
    const auto listing = newTreeListing(options.format, options.file, items.fileLength(), stdout);
    while (const std::optional<TreeItem> item = items.next()) listing->write(*item);
    listing->finish();
    throwIfInterrupted(options.file, fmt::format("byte {}", reached.bytes));
    return kExitDone;
}

}  // namespace

void addTreeCommand(CommandLine& line, const Globals& globals) {
    auto options = std::make_shared<Options>();
    Arguments command = line.command("tree", "The element tree, with offsets, sizes and values");
    command.value("FILE", options->file, "The file to read").required();
    command
        .value("--depth", options->tree.depth,
               "Show N levels, each in full; with --at, N levels below the element (default 1)")
        .within(1, int(ElementWalk::kDeepest));
    command.flag("--all", options->isWhole, "Show every element, also where many of a kind follow");
    command.value("--at", options->tree.at,
                  "Show the element that holds the byte at this offset, the way to it and what it holds");
    addProgressOption(command, options->progress);
    addFormatOption(command, options->format,
                    {{"text", Format::kTable}, {"json", Format::kJson}, {"jsonl", Format::kJsonLines}});
    command.footer("Example: mkvx tree --at 5914 film.mkv");
    command.action([&globals, options] { return run(globals, *options); });
}

}  // namespace mkvx
