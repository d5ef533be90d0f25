#include <fmt/format.h>
#include <fmt/ranges.h>

#include "cli/HelpModel.h"

namespace mkvx {
namespace {

std::vector<std::string> optionNames(const CommandHelp& command) {
    std::vector<std::string> names;
    for (const OptionHelp& option : command.options)
        names.insert(names.end(), option.names.begin(), option.names.end());
    return names;
}

std::vector<std::string> commandNames(const CommandHelp& program) {
    std::vector<std::string> names;
    for (const CommandHelp& command : program.commands) names.push_back(command.name);
    return names;
}

// ---- bash: two tables, what a command takes and what an option may be followed by

std::string bashWords(const std::string& pattern, const std::vector<std::string>& words) {
    return fmt::format("    '{}') words='{}' ;;\n", pattern, fmt::join(words, " "));
}

// The cases "command option" of the options that take a value; without choices a file name is completed.
std::string bashValues(const CommandHelp& command, const std::string& name) {
    std::string text;
    for (const OptionHelp& option : command.options) {
        if (option.value.empty()) continue;
        for (const std::string& spelling : option.names)
            text += bashWords(name + " " + spelling, option.choices);
    }
    return text;
}

std::string bashArguments(const CommandHelp& command) {
    std::vector<std::string> words;
    for (const OptionHelp& argument : command.arguments)
        words.insert(words.end(), argument.choices.begin(), argument.choices.end());
    return words.empty() ? std::string() : bashWords(command.name, words);
}

// ---- zsh

// Within single quotes, where brackets and colons mean something.
std::string zshText(const std::string& text) {
    std::string out;
    for (const char c : text) {
        if (c == '\'')
            out += "'\\''";
        else if (c == '[' || c == ']' || c == ':' || c == '\\')
            out += fmt::format("\\{}", c);
        else
            out += c;
    }
    return out;
}

std::string zshValue(const OptionHelp& option) {
    if (option.value.empty()) return {};
    const std::string words = fmt::format("{}", fmt::join(option.choices, " "));
    return fmt::format(":{}:{}", zshText(option.value), words.empty() ? "_files" : "(" + words + ")");
}

std::string zshOptions(const CommandHelp& command, const char* indent) {
    std::string text;
    for (const OptionHelp& option : command.options)
        for (const std::string& name : option.names)
            text += fmt::format("{}'{}{}[{}]{}' \\\n", indent, option.isRepeatable ? "*" : "", name,
                                zshText(option.description), zshValue(option));
    return text;
}

std::string zshCommand(const CommandHelp& program, const CommandHelp& command) {
    std::string text = fmt::format("    ({})\n      _arguments \\\n", command.name);
    text += zshOptions(program, "        ") + zshOptions(command, "        ");
    for (const OptionHelp& argument : command.arguments)
        text += fmt::format("        '{}{}' \\\n", argument.isRepeatable ? "*" : "",
                            argument.isRepeatable ? ":" + zshValue(argument).substr(1) : zshValue(argument));
    return text + "        && ret=0\n      ;;\n";
}

}  // namespace

std::string renderBashCompletion(const CommandHelp& program) {
    std::string text = fmt::format("# bash completion for {}, made from its help texts\n", program.name);
    text += fmt::format(
        "_{0}() {{\n"
        "  local current=${{COMP_WORDS[COMP_CWORD]}} previous=${{COMP_WORDS[COMP_CWORD-1]}} command= word i "
        "words=\n"
        "  for ((i = 1; i < COMP_CWORD; i++)); do\n"
        "    word=${{COMP_WORDS[i]}}\n"
        "    case \" {1} \" in *\" $word \"*) command=$word; break ;; esac\n"
        "  done\n"
        "  COMPREPLY=()\n"
        "  local isValue=1\n"
        "  case \"$command $previous\" in\n",
        program.name, fmt::join(commandNames(program), " "));
    for (const CommandHelp& command : program.commands)
        text += bashValues(command, command.name) + bashValues(program, command.name);
    text += bashValues(program, "");
    text += "    *) isValue= ;;\n  esac\n";
    text += "  if [ -z \"$isValue\" ]; then\n  if [[ $current == -* ]]; then case \"$command\" in\n";
    std::vector<std::string> global = optionNames(program);
    text += bashWords("", global);
    for (const CommandHelp& command : program.commands) {
        std::vector<std::string> all = optionNames(command);
        for (const std::string& name : global)
            if (name != "--version" && name != "-h" && name != "--help") all.push_back(name);
        text += bashWords(command.name, all);
    }
    text += "  esac; else case \"$command\" in\n" + bashWords("", commandNames(program));
    for (const CommandHelp& command : program.commands) text += bashArguments(command);
    text += fmt::format(
        "  esac; fi; fi\n"
        "  mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$current\")\n"
        "}}\n"
        "# Where no word fits, a file name may.\n"
        "complete -o bashdefault -o default -F _{0} {0}\n",
        program.name);
    return text;
}

std::string renderZshCompletion(const CommandHelp& program) {
    std::string text =
        fmt::format("#compdef {0}\n# made from the help texts of {0}\n\n_{0}() {{\n", program.name);
    text += "  local context state state_descr line ret=1\n  typeset -A opt_args\n  _arguments -C \\\n";
    text += zshOptions(program, "    ");
    text += "    '1: :->command' \\\n    '*:: :->rest' && ret=0\n";
    text += "  case $state in\n  (command)\n    local -a commands=(\n";
    for (const CommandHelp& command : program.commands)
        text += fmt::format("      '{}:{}'\n", command.name, zshText(command.description));
    text += "    )\n    _describe -t commands command commands && ret=0\n    ;;\n";
    text += "  (rest)\n    case $line[1] in\n";
    for (const CommandHelp& command : program.commands) text += zshCommand(program, command);
    return text + fmt::format("    esac\n    ;;\n  esac\n  return ret\n}}\n\n_{} \"$@\"\n", program.name);
}

}  // namespace mkvx
