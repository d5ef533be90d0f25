// mkvx check PATH...: what a device would do with files, and why.
#include <fmt/format.h>
#include <algorithm>
#include <map>
#include <thread>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "base/Terminal.h"
#include "base/Text.h"
#include "check/Gate.h"
#include "check/Journal.h"
#include "check/DecoderOptions.h"
#include "check/Json.h"
#include "check/Run.h"
#include "check/Selection.h"
#include "check/Text.h"
#include "cli/Command.h"
#include "cli/SharedOptions.h"
#include "device/Plugin.h"
#include "source/OpenSource.h"
#include "source/Spool.h"

namespace mkvx {
namespace {

struct Options {
    Selection selection;
    CheckRunOptions run;
    GateOptions gate;
    std::string journal;  // empty: none
    bool isQuick = false;
    bool isBrief = false;
    bool follows = false;
    DecoderFiles decoders;
    Format format = Format::kTable;
};

// Hands text out in the order of the list and JSON lines as they come; keeps what the end needs.
class Reporter {
  public:
    Reporter(const Options& options, Journal* journal)
        : mOptions(options), mJournal(journal), mGate(options.gate) {}

    // Of a run before.
    void takeKnown(const CheckedFile& checked) { count(checked); }

    void take(size_t place, CheckedFile checked) {
        ++mNew;
        count(checked);
        if (mJournal != nullptr) return mJournal->append(checked);
        if (mOptions.format == Format::kJsonLines) {
            fmt::print("{}\n", toJsonLine(checked));
            std::fflush(stdout);
            return;
        }
        mWaiting.emplace(place, std::move(checked));
        while (!mWaiting.empty() && mWaiting.begin()->first == mDone.size()) printNext();
    }

    int finish(bool isComplete) {
        while (!mWaiting.empty()) printNext();
        if (mJournal != nullptr) {
            fmt::print("{}: {}, {} of them new\n", mJournal->path(), countsText(mCounts), mNew);
            return mGate.exitCode();
        }
        if (mOptions.format == Format::kJson) fmt::print("{}\n", toJson(mDone, mWorst, isComplete));
        if (mOptions.format == Format::kTable && mDone.size() > 1) renderCheckSummary(mDone, stdout);
        return mGate.exitCode();
    }
    size_t done() const { return mNew; }

  private:
    void count(const CheckedFile& checked) {
        ++mCounts[checked.verdict];
        mWorst = std::max(mWorst, checked.verdict);
        mGate.take(checked);
    }

    void printNext() {
        mDone.push_back(std::move(mWaiting.begin()->second));
        mWaiting.erase(mWaiting.begin());
        if (mOptions.format != Format::kTable) return;
        renderChecked(mDone.back(), mOptions.isBrief, stdout);
        std::fflush(stdout);
    }

    const Options& mOptions;
    std::map<size_t, CheckedFile> mWaiting;  // for those in front of them
    std::vector<CheckedFile> mDone;
    Journal* mJournal;
    Gate mGate;
    VerdictCounts mCounts;
    size_t mNew = 0;
    Verdict mWorst = Verdict::kPlays;
};

int run(const Globals& globals, const Options& options) {
    const std::vector<std::string> paths = namedPaths(options.selection);
    auto [files, passedOver] = findFiles(paths, options.follows);
    for (const std::string& sentence : passedOver) tell(sentence);
    if (files.empty())
        throw FileFailure(
            paths.front(),
            "holds no Matroska or WebM file (a file that is named itself is examined whatever it is)");
    files = shareOf(options.selection.shard, std::move(files));
    CheckRunOptions runOptions = options.run;
    runOptions.depth.units = !options.isQuick;
    runOptions.depth.decoders = readMeasure(options.decoders);
    runOptions.source = globals.source;
    if (std::any_of(paths.begin(), paths.end(), isStandardInput))
        (void)spooledInput();  // once, before there are children to share it
    const ExtractorPlugin plugin = loadPlugin(globals.plugin);
    const auto journal = options.journal.empty() ? nullptr : std::make_unique<Journal>(options.journal);
    Reporter reporter(options, journal.get());
    if (journal)
        files = journal->unknownOf(files, [&](const CheckedFile& known) { reporter.takeKnown(known); });
    const bool isComplete = checkFiles(plugin, files, runOptions, [&](size_t place, CheckedFile checked) {
        reporter.take(place, std::move(checked));
    });
    const int exitCode = reporter.finish(isComplete);
    throwIfInterrupted(paths.front(),
                       fmt::format("{} of {}", reporter.done(), counted(files.size(), "file")));
    return exitCode;
}

}  // namespace

void addCheckCommand(CommandLine& line, const Globals& globals) {
    auto options = std::make_shared<Options>();
    options->run.jobs = std::max(1u, std::thread::hardware_concurrency());
    Arguments command = line.command("check", "What a device would do with files, track by track, and why");
    addSelectionOptions(command, options->selection);
    command
        .value("--resume", options->journal,
               "Add results to this file as JSON lines, and pass over files that it knows as they are now")
        .called("OUT.jsonl");
    command.value("--jobs,-j", options->run.jobs, "How many files at once").within(1u, 256u).showDefault();
    command.value("--time-limit", options->run.timeLimit, "Seconds after which a file is given up")
        .within(0.01, 1e6)
        .showDefault();
    command.flag("--follow", options->follows, "Follow links to folders, each folder once");
    command.flag("--quick", options->isQuick, "Only what opening tells: read no units, count no bytes");
    command.flag("--brief", options->isBrief, "Only the verdict lines and the table");
    addDecoderOptions(command, options->decoders);
    addGateOptions(command, options->gate);
    addProgressOption(command, options->run.progress);
    addFormatOption(command, options->format,
                    {{"table", Format::kTable}, {"json", Format::kJson}, {"jsonl", Format::kJsonLines}});
    command.footer("Example: mkvx check film.mkv\n         mkvx check --jobs 8 --format jsonl /media/films");
    command.action([&globals, options] { return run(globals, *options); });
}

}  // namespace mkvx
