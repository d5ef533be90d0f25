// Arguments, exit codes and the one place where a failure becomes a sentence on stderr.
#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <cstdio>
#include <exception>
#include <optional>
#include <system_error>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "base/Log.h"
#include "base/Similar.h"
#include "base/Text.h"
#include "cli/Command.h"
#include "cli/HelpModel.h"

namespace {

constexpr char kExamples[] =
    "  mkvx check film.mkv                 # what a device would do with it, track by track, and why\n"
    "  mkvx info film.mkv                  # the tracks that a player would be offered\n"
    "  mkvx report film.mkv -o film.html   # all of it as a page for the browser\n";

int complain(const std::string& sentence, int exitCode) {
    fmt::print(stderr, "mkvx: {}\n", sentence);
    return exitCode;
}

// The first word that stands where a command should.
std::optional<std::string> wrongCommand(const CLI::App& app) {
    if (!app.get_subcommands().empty()) return std::nullopt;
    for (const std::string& word : app.remaining())
        if (word.empty() || word[0] != '-') return word;
    return std::nullopt;
}

int complainOfCommand(const CLI::App& app, const std::string& word) {
    std::vector<std::string> names, similar;
    for (const mkvx::CommandHelp& command : mkvx::describeHelp(app).commands) names.push_back(command.name);
    similar = mkvx::similarTo(word, names);
    return complain(
        fmt::format("there is no command {}{} (mkvx --help lists the commands)", mkvx::printable(word),
                    similar.empty() ? "" : ", did you mean " + similar.front() + "?"),
        mkvx::kExitWrongUsage);
}

int answerParseError(const CLI::App& app, const CLI::ParseError& error, bool isBare) {
    if (error.get_exit_code() == 0) return app.exit(error);  // --help, --version
    if (isBare) {
        fmt::print(stderr, "Usage: mkvx COMMAND FILE... [OPTION...]\n{}mkvx --help lists the commands.\n",
                   kExamples);
        return mkvx::kExitWrongUsage;
    }
    if (const auto word = wrongCommand(app)) return complainOfCommand(app, *word);
    const auto commands = app.get_subcommands();
    return complain(fmt::format("{} ({} --help tells more)", mkvx::printable(error.what()),
                                commands.empty() ? "mkvx" : "mkvx " + commands.front()->get_name()),
                    mkvx::kExitWrongUsage);
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

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"Shows what an Android device's media framework gets out of a Matroska or WebM file.",
                 "mkvx"};
    mkvx::Globals globals;
    mkvx::Action chosen;
    app.set_version_flag("--version", "mkvx " MKVX_VERSION);
    app.add_option("--plugin", globals.plugin,
                   "The extractor plug-in (default: the one beside this program)");
    app.add_option("--log", globals.logLevel, "Show log records of this level and above on stderr")
        ->check(CLI::IsMember(mkvx::logLevels()))
        ->capture_default_str();
    mkvx::addSourceOptions(app, globals.source);
    app.require_subcommand(1);
    app.footer(
        "Exit codes: 0 done; 1 a file cannot be used, or the result cannot be written; 2 wrong usage; 3 to 6 "
        "are verdicts of check; 130 interrupted.\n" +
        std::string("Example:\n") + kExamples);
    app.fallthrough();
    mkvx::addCheckCommand(app, globals, chosen);
    mkvx::addSniffCommand(app, globals, chosen);
    mkvx::addInfoCommand(app, globals, chosen);
    mkvx::addPacketsCommand(app, globals, chosen);
    mkvx::addSeekCommand(app, globals, chosen);
    mkvx::addLateCommand(app, globals, chosen);
    mkvx::addIndexCommand(app, globals, chosen);
    mkvx::addDecodeCommand(app, globals, chosen);
    mkvx::addExtractCommand(app, globals, chosen);
    mkvx::addCostCommand(app, globals, chosen);
    mkvx::addReportCommand(app, globals, chosen);
    mkvx::addBenchCommand(app, globals, chosen);
    mkvx::addTreeCommand(app, globals, chosen);
    mkvx::addExplainCommand(app, globals, chosen);
    mkvx::addChaptersCommand(app, globals, chosen);
    mkvx::addAttachmentsCommand(app, globals, chosen);
    mkvx::addHelpCommand(app, chosen);

    try {
        app.parse(argc, argv);
        mkvx::installLogger(globals.logLevel);
        mkvx::watchForInterruption();
        return flushed(withTroubles(*globals.source.troubles, chosen()));
    } catch (const CLI::ParseError& error) {
        return answerParseError(app, error, argc < 2);
    } catch (const std::exception&) {
        return answerFailure(globals.source);
    }
}
