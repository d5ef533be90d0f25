// Arguments, exit codes and the one place where a failure becomes a sentence on stderr.
#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <cstdio>
#include <exception>
#include <system_error>

#include "Command.h"
#include "Failure.h"
#include "Log.h"

namespace {

int complain(const std::string& sentence, int exitCode) {
    fmt::print(stderr, "mkvx: {}\n", sentence);
    return exitCode;
}

int answerParseError(const CLI::App& app, const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);  // --help, --version
    return complain(std::string(error.what()) + " (mkvx --help lists the commands)", mkvx::kExitWrongUsage);
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

// What is printed came from sources that may have broken before their end.
int withTroubles(const mkvx::SourceTroubles& troubles, int exitCode) {
    if (troubles.empty()) return exitCode;
    std::fflush(stdout);
    for (const std::string& trouble : troubles) complain(trouble, exitCode);
    return exitCode == mkvx::kExitDone ? int(mkvx::kExitFileUnusable) : exitCode;
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
        "are "
        "verdicts of check; 130 interrupted.\n"
        "Example: mkvx info film.mkv");
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
        return flushed(withTroubles(*globals.source.troubles, chosen()));
    } catch (const CLI::ParseError& error) {
        return answerParseError(app, error);
    } catch (const mkvx::UsageFailure& failure) {
        return complain(failure.what(), mkvx::kExitWrongUsage);
    } catch (const mkvx::FileFailure& failure) {
        return complainOfFile(globals.source, failure.what());
    } catch (const std::system_error& error) {  // the printing library met a full disk or a closed pipe
        return complain(std::string("standard output: ") + error.what(), mkvx::kExitFileUnusable);
    } catch (const std::exception& error) {
        return complainOfFile(globals.source, error.what());
    }
}
