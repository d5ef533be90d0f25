// The commands and options of this program as plain values, read from what --help is made of: manual page and
// shell completion cannot tell another story than the help texts.
#pragma once
#include <string>
#include <vector>

namespace mkvx {

class CommandLine;

struct OptionHelp {
    std::vector<std::string> names;  // "-o", "--format"; empty for a positional argument
    std::string value;               // what it takes, "FILE" or "TEXT"; empty for a flag
    std::vector<std::string> choices;
    std::string defaultValue;
    std::string description;
    bool isRequired = false;
    bool isRepeatable = false;
};

struct CommandHelp {
    std::string name;
    std::string description;
    std::vector<std::string> notes;     // the footer's lines that are no example
    std::vector<std::string> examples;  // command lines
    std::vector<OptionHelp> options;    // in the order of --help
    std::vector<OptionHelp> arguments;
    std::vector<CommandHelp> commands;  // without hidden ones
};

CommandHelp describeHelp(const CommandLine& line);

// A manual page in roff, section 1.
std::string renderManual(const CommandHelp& program, const std::string& version);
// What bash sources, and what zsh finds in its function path, to complete a command line.
std::string renderBashCompletion(const CommandHelp& program);
std::string renderZshCompletion(const CommandHelp& program);

}  // namespace mkvx
