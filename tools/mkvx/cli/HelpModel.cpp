#include "cli/HelpModel.h"

#include <CLI/CLI.hpp>
#include <sstream>

#include "cli/Arguments.h"

namespace mkvx {
namespace {

// The values between the braces of a type such as "TEXT:{table,json}".
std::vector<std::string> choicesOf(const std::string& type) {
    const size_t open = type.find('{'), close = type.rfind('}');
    std::vector<std::string> choices;
    if (open == std::string::npos || close == std::string::npos) return choices;
    std::istringstream list(type.substr(open + 1, close - open - 1));
    for (std::string choice; std::getline(list, choice, ',');) choices.push_back(choice);
    return choices;
}

OptionHelp describe(const CLI::Option& option) {
    OptionHelp help;
    for (const std::string& name : option.get_snames()) help.names.push_back("-" + name);
    for (const std::string& name : option.get_lnames()) help.names.push_back("--" + name);
    const std::string type = option.get_type_name();
    if (!option.nonpositional())
        help.value = option.get_name(true);
    else if (option.get_items_expected_max() > 0)
        help.value = type.substr(0, type.find_first_of(":["));
    help.choices = choicesOf(type);
    help.defaultValue = option.get_default_str();
    help.description = option.get_description();
    help.isRequired = option.get_required();
    help.isRepeatable = option.get_items_expected_max() > 1;
    return help;
}

void readFooter(const std::string& footer, CommandHelp& help) {
    static const std::string kExample = "Example:";
    std::istringstream lines(footer);
    bool isExample = false;  // and so are the indented lines that follow it
    for (std::string line; std::getline(lines, line);) {
        const bool isFirst = line.compare(0, kExample.size(), kExample) == 0;
        if (isFirst) line.replace(0, kExample.size(), " ");
        isExample = isFirst || (isExample && line[0] == ' ');
        const size_t start = line.find_first_not_of(' ');
        if (start == std::string::npos) continue;
        (isExample ? help.examples : help.notes).push_back(line.substr(start));
    }
}

CommandHelp describe(const CLI::App& app) {
    CommandHelp help;
    help.name = app.get_name();
    help.description = app.get_description();
    readFooter(app.get_footer(), help);
    for (const CLI::Option* option : app.get_options()) {
        if (option->get_group().empty()) continue;  // hidden
        (option->nonpositional() ? help.options : help.arguments).push_back(describe(*option));
    }
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
        if (!command->get_group().empty()) help.commands.push_back(describe(*command));
    return help;
}

}  // namespace

CommandHelp describeHelp(const CommandLine& line) {
    return describe(line.app());
}

}  // namespace mkvx
