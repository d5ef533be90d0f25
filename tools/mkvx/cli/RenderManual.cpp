#include <fmt/format.h>
#include <fmt/ranges.h>
#include <cctype>

#include "cli/HelpModel.h"

namespace mkvx {
namespace {

// Text of a roff line: backslashes, hyphens and a leading dot or quote mean something there.
std::string roff(const std::string& text) {
    std::string out;
    for (const char c : text) {
        if (c == '\\')
            out += "\\e";
        else if (c == '-')
            out += "\\-";
        else
            out += c;
    }
    return !out.empty() && (out[0] == '.' || out[0] == '\'') ? "\\&" + out : out;
}

std::string bold(const std::string& text) {
    return "\\fB" + roff(text) + "\\fR";
}

std::string italic(const std::string& text) {
    return "\\fI" + roff(text) + "\\fR";
}

std::string sentence(const std::string& text) {
    const bool isEnded = !text.empty() && std::string(".?!").find(text.back()) != std::string::npos;
    return roff(text) + (isEnded ? "" : ".");
}

std::string synopsis(const CommandHelp& program, const CommandHelp* command) {
    std::string text = bold(program.name);
    if (command == nullptr) return text + " " + italic("COMMAND") + " [" + italic("OPTION") + "]...";
    text += " " + bold(command->name);
    for (const OptionHelp& option : command->options)
        if (option.isRequired) text += fmt::format(" {} {}", bold(option.names.back()), italic(option.value));
    text += " [" + italic("OPTION") + "]...";
    for (const OptionHelp& argument : command->arguments) {
        const std::string value = italic(argument.value) + (argument.isRepeatable ? "..." : "");
        text += argument.isRequired ? " " + value : " [" + value + "]";
    }
    return text;
}

std::string optionText(const OptionHelp& option) {
    std::string title;
    for (const std::string& name : option.names) title += (title.empty() ? "" : ", ") + bold(name);
    if (!option.value.empty()) title += (title.empty() ? "" : " ") + italic(option.value);
    std::string text = sentence(option.description);
    if (!option.choices.empty())
        text += roff(fmt::format(" One of {}", fmt::join(option.choices, ", "))) + ".";
    if (!option.defaultValue.empty()) text += " Default: " + roff(option.defaultValue) + ".";
    return fmt::format(".TP\n{}\n{}\n", title, text);
}

std::string optionsText(const CommandHelp& command) {
    std::string text;
    for (const OptionHelp& argument : command.arguments) text += optionText(argument);
    for (const OptionHelp& option : command.options)
        if (option.names.back() != "--help") text += optionText(option);
    return text;
}

std::string examplesText(const CommandHelp& command) {
    std::string text;
    for (const std::string& example : command.examples)
        text += fmt::format(".PP\nExample:\n.PP\n.RS 4\n.EX\n{}\n.EE\n.RE\n", roff(example));
    return text;
}

std::string commandText(const CommandHelp& program, const CommandHelp& command) {
    return fmt::format(".SS {}\n{}\n.PP\n{}\n{}{}", roff(command.name), synopsis(program, &command),
                       sentence(command.description), optionsText(command), examplesText(command));
}

}  // namespace

std::string renderManual(const CommandHelp& program, const std::string& version) {
    std::string summary = program.description;
    if (!summary.empty() && summary.back() == '.') summary.pop_back();
    if (!summary.empty()) summary[0] = char(std::tolower(static_cast<unsigned char>(summary[0])));
    std::string text =
        fmt::format(".TH {} 1 \"\" \"{} {}\" \"User Commands\"\n", "MKVX", program.name, version);
    text += fmt::format(".SH NAME\n{} \\- {}\n", roff(program.name), roff(summary));
    text += fmt::format(".SH SYNOPSIS\n{}\n", synopsis(program, nullptr));
    text += fmt::format(".SH DESCRIPTION\n{}\n", sentence(program.description));
    for (const std::string& note : program.notes) text += fmt::format(".PP\n{}\n", roff(note));
    text += examplesText(program);
    text += ".SH OPTIONS OF EVERY COMMAND\n" + optionsText(program);
    text += ".SH COMMANDS\n";
    for (const CommandHelp& command : program.commands) text += commandText(program, command);
    return text;
}

}  // namespace mkvx
