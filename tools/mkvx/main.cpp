// Arguments, exit codes and the one place where a failure becomes a sentence on stderr.
#include <fmt/format.h>
#include <cstdio>
#include <exception>
#include <system_error>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "base/Log.h"
#include "base/Terminal.h"
#include "cli/Command.h"

namespace {

constexpr char kExamples[] =
    "  mkvx check film.mkv                 # what a device would do with it, track by track, and why\n"
    "  mkvx info film.mkv                  # the tracks that a player would be offered\n"
    "  mkvx report film.mkv -o film.html   # all of it as a page for the browser\n";

int complain(const std::string& sentence, int exitCode) {
    mkvx::tell(sentence);
    return exitCode;
}

int complainOfNoCommand() {
    fmt::print(stderr, "Usage: mkvx COMMAND FILE... [OPTION...]\n{}mkvx --help lists the commands.\n",
               kExamples);
    return mkvx::kExitWrongUsage;
}

// A full disk or a closed pipe shows only when the last bytes are written.
int flushed(int exitCode) {
    if (std::fflush(stdout) != 0 || std::ferror(stdout))
        return complain("standard output: cannot write the result", mkvx::kExitFileUnusable);
    return exitCode;
}

// A source that broke tells more than what the command made of the reads that failed.
int complainOfFile(const mkvx::SourceOptions& source, const std::string& sentence) {
    std::fflush(stdout);
    if (!source.troubles->empty()) return complain(source.troubles->front(), mkvx::kExitFileUnusable);
    return complain(sentence + (source.faults.any() ? " (with the faults that were asked for)" : ""),
                    mkvx::kExitFileUnusable);
}

// What was found is on stdout.
int complainOfInterruption(const std::string& sentence) {
    return flushed(mkvx::kExitDone) == mkvx::kExitDone ? complain(sentence, mkvx::kExitInterrupted)
                                                       : mkvx::kExitFileUnusable;
}

// What is printed came from sources that may have broken before their end.
int withTroubles(const mkvx::SourceTroubles& troubles, int exitCode) {
    if (troubles.empty()) return exitCode;
    std::fflush(stdout);
    for (const std::string& trouble : troubles) complain(trouble, exitCode);
    return exitCode == mkvx::kExitDone ? int(mkvx::kExitFileUnusable) : exitCode;
}

// Of the exception that is being handled.
int answerFailure(const mkvx::SourceOptions& source) {
    try {
        throw;
    } catch (const std::system_error& error) {  // the printing library met a full disk or a closed pipe
        return complain(std::string("standard output: ") + error.what(), mkvx::kExitFileUnusable);
    } catch (const mkvx::Interrupted& interrupted) {
        return complainOfInterruption(interrupted.what());
    } catch (const std::exception& error) {
        if (mkvx::wasInterrupted())  // whatever failed, reads that were not served are behind it
            return complainOfInterruption(mkvx::interruptedBeforeResult());
        if (dynamic_cast<const mkvx::UsageFailure*>(&error) != nullptr)
            return complain(error.what(), mkvx::kExitWrongUsage);
        return complainOfFile(source, error.what());
    }
}

void addCommands(mkvx::CommandLine& line, const mkvx::Globals& globals) {
    mkvx::addCheckCommand(line, globals);
    mkvx::addMendCommand(line, globals);
    mkvx::addSummaryCommand(line);
    mkvx::addDiffCommand(line);
    mkvx::addCompareCommand(line, globals);
    mkvx::addSniffCommand(line, globals);
    mkvx::addInfoCommand(line, globals);
    mkvx::addPacketsCommand(line, globals);
    mkvx::addSeekCommand(line, globals);
    mkvx::addLateCommand(line, globals);
    mkvx::addIndexCommand(line, globals);
    mkvx::addDecodeCommand(line, globals);
    mkvx::addExtractCommand(line, globals);
    mkvx::addCostCommand(line, globals);
    mkvx::addReportCommand(line, globals);
    mkvx::addBenchCommand(line, globals);
    mkvx::addTreeCommand(line, globals);
    mkvx::addExplainCommand(line, globals);
    mkvx::addChaptersCommand(line, globals);
    mkvx::addAttachmentsCommand(line, globals);
    mkvx::addHelpCommand(line);
}

}  // namespace

int main(int argc, char** argv) {
    mkvx::CommandLine line(
        "mkvx", MKVX_VERSION,
        "Shows what an Android device's media framework gets out of a Matroska or WebM file.");
    mkvx::Globals globals;
    mkvx::addGlobalOptions(line, globals);
    line.everywhere().footer(
        "Exit codes: 0 done; 1 a file cannot be used, or the result cannot be written; 2 wrong usage; 3 to 6 "
        "are verdicts of check; 130 interrupted.\n" +
        std::string("Example:\n") + kExamples);
    addCommands(line, globals);
    if (argc < 2) return complainOfNoCommand();
    try {
        if (const std::optional<int> exitCode = line.parse(argc, argv)) return *exitCode;
        mkvx::installLogger(globals.logLevel);
        mkvx::watchForInterruption();
        return flushed(withTroubles(*globals.source.troubles, line.run()));
    } catch (const std::exception&) {
        return answerFailure(globals.source);
    }
}
