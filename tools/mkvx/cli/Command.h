// What main() and the commands agree on. Each command lives in a file of its own: its add...() function
// declares what the command takes, and the work that is done when it was chosen.
#pragma once
#include <string>

#include "cli/Arguments.h"
#include "source/Options.h"

namespace mkvx {

struct Globals {
    std::string plugin;  // path; empty means beside the program
    std::string logLevel{"off"};
    SourceOptions source;
};

// Declares the options of every command; `globals` has to live as long as `line`.
void addGlobalOptions(CommandLine& line, Globals& globals);

void addSniffCommand(CommandLine& line, const Globals& globals);
void addInfoCommand(CommandLine& line, const Globals& globals);
void addPacketsCommand(CommandLine& line, const Globals& globals);
void addSeekCommand(CommandLine& line, const Globals& globals);
void addLateCommand(CommandLine& line, const Globals& globals);
void addIndexCommand(CommandLine& line, const Globals& globals);
void addDecodeCommand(CommandLine& line, const Globals& globals);
void addExtractCommand(CommandLine& line, const Globals& globals);
void addCheckCommand(CommandLine& line, const Globals& globals);
void addMendCommand(CommandLine& line, const Globals& globals);
void addSummaryCommand(CommandLine& line);
void addDiffCommand(CommandLine& line);
void addCompareCommand(CommandLine& line, const Globals& globals);
void addCostCommand(CommandLine& line, const Globals& globals);
void addReportCommand(CommandLine& line, const Globals& globals);
void addBenchCommand(CommandLine& line, const Globals& globals);
void addTreeCommand(CommandLine& line, const Globals& globals);
void addExplainCommand(CommandLine& line, const Globals& globals);
void addChaptersCommand(CommandLine& line, const Globals& globals);
void addAttachmentsCommand(CommandLine& line, const Globals& globals);
// Tells of all commands that `line` has when it runs.
void addHelpCommand(CommandLine& line);

}  // namespace mkvx
