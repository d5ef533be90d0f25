// What main() and the subcommands agree on. Each subcommand lives in a file of its own: its add...() function
// declares the options and, when the subcommand was chosen, leaves the work to be done in `chosen`.
#pragma once
#include <functional>
#include <string>

#include "source/Options.h"

namespace CLI {
class App;
}

namespace mkvx {

struct Globals {
    std::string plugin;  // path; empty means beside the program
    std::string logLevel{"off"};
    SourceOptions source;
};

// The work of the chosen subcommand; returns an ExitCode, or throws what Failure.h declares.
using Action = std::function<int()>;

void addSniffCommand(CLI::App& app, const Globals& globals, Action& chosen);
void addInfoCommand(CLI::App& app, const Globals& globals, Action& chosen);
void addPacketsCommand(CLI::App& app, const Globals& globals, Action& chosen);
void addSeekCommand(CLI::App& app, const Globals& globals, Action& chosen);
void addLateCommand(CLI::App& app, const Globals& globals, Action& chosen);
void addIndexCommand(CLI::App& app, const Globals& globals, Action& chosen);
void addDecodeCommand(CLI::App& app, const Globals& globals, Action& chosen);
void addExtractCommand(CLI::App& app, const Globals& globals, Action& chosen);
void addCheckCommand(CLI::App& app, const Globals& globals, Action& chosen);
void addCostCommand(CLI::App& app, const Globals& globals, Action& chosen);
void addReportCommand(CLI::App& app, const Globals& globals, Action& chosen);
void addBenchCommand(CLI::App& app, const Globals& globals, Action& chosen);
void addTreeCommand(CLI::App& app, const Globals& globals, Action& chosen);
void addExplainCommand(CLI::App& app, const Globals& globals, Action& chosen);
void addChaptersCommand(CLI::App& app, const Globals& globals, Action& chosen);
void addAttachmentsCommand(CLI::App& app, const Globals& globals, Action& chosen);
// Tells of all commands that `app` has when it runs.
void addHelpCommand(CLI::App& app, Action& chosen);

}  // namespace mkvx
