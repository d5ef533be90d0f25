#include "cli/Arguments.h"

#include <fmt/format.h>
#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>

#include "base/Failure.h"
#include "base/Similar.h"
#include "base/Terminal.h"
#include "base/Text.h"
#include "cli/HelpModel.h"

namespace mkvx {
namespace {

// The first word that stands where a command should.
std::optional<std::string> wrongCommand(const CLI::App& app) {
    if (!app.get_subcommands().empty()) return std::nullopt;
    for (const std::string& word : app.remaining())
        if (word.empty() || word[0] != '-') return word;
    return std::nullopt;
}

UsageFailure noSuchCommand(const CommandLine& line, const std::string& word) {
    std::vector<std::string> names;
    for (const CommandHelp& command : describeHelp(line).commands) names.push_back(command.name);
    const std::vector<std::string> similar = similarTo(word, names);
    return UsageFailure(
        fmt::format("there is no command {}{} ({} --help lists the commands)", printable(word),
                    similar.empty() ? "" : ", did you mean " + similar.front() + "?", line.app().get_name()));
}

// Descriptions of options go on below their beginning.
size_t hangingOf(const std::string& line) {
    constexpr size_t kDescriptions = 30;
    const bool isOption =
        line.size() > kDescriptions && line[kDescriptions] != ' ' && line[kDescriptions - 1] == ' ';
    const size_t indent = std::min(line.find_first_not_of(' '), line.size());
    return indent > 0 && isOption ? kDescriptions : indent + 2;
}

std::string fittedToTerminal(const std::string& help) {
    const size_t width = terminalWidth(stdout);
    std::istringstream lines(help);
    std::string text;
    for (std::string line; std::getline(lines, line);) text += wrapped(line, width, hangingOf(line)) + "\n";
    return text;
}

UsageFailure wrongUsage(const CLI::App& app, const std::string& problem) {
    std::string help = app.get_name();
    if (!app.get_subcommands().empty()) help += " " + app.get_subcommands().front()->get_name();
    return UsageFailure(fmt::format("{} ({} --help tells more)", printable(problem), help));
}

template <class Value>
constexpr bool isUnsigned = std::is_unsigned_v<Value>;
template <class Value>
constexpr bool isUnsigned<std::optional<Value>> = isUnsigned<Value>;

// The library takes such a number for a huge one.
std::string negativeProblem(const std::string& text) {
    return text.compare(0, 1, "-") == 0 ? text + " is less than 0" : std::string();
}

}  // namespace

// ---- Argument

Argument& Argument::required() {
    mOption.required();
    return *this;
}

Argument& Argument::repeatable() {
    mOption.expected(1)->allow_extra_args(false)->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    return *this;
}

Argument& Argument::oneOf(const std::vector<std::string>& words) {
    mOption.check(CLI::IsMember(words));
    return *this;
}

template <class Number>
Argument& Argument::within(Number least, Number most) {
    mOption.check(CLI::Range(least, most));
    return *this;
}
template Argument& Argument::within(int, int);
template Argument& Argument::within(unsigned, unsigned);
template Argument& Argument::within(uint64_t, uint64_t);
template Argument& Argument::within(double, double);

Argument& Argument::positive() {
    mOption.check(CLI::PositiveNumber);
    return *this;
}

Argument& Argument::checked(const TakeText& check, const std::string& shape) {
    mOption.check(CLI::Validator([check](const std::string& text) { return check(text); }, shape));
    return *this;
}

Argument& Argument::insteadOf(const Argument& other) {
    mOption.excludes(&other.mOption);
    return *this;
}

Argument& Argument::called(const std::string& type) {
    mOption.type_name(type);
    return *this;
}

Argument& Argument::under(const std::string& heading) {
    mOption.group(heading);
    return *this;
}

Argument& Argument::showDefault() {
    mOption.capture_default_str();
    return *this;
}

Argument& Argument::showDefault(const std::string& text) {
    mOption.default_str(text);
    return *this;
}

// ---- Arguments

template <class Value>
Argument Arguments::value(const std::string& names, Value& value, const std::string& help) {
    CLI::Option& option = *mApp.add_option(names, value, help);
    if (isUnsigned<Value>) option.check(CLI::Validator(negativeProblem, ""));
    return Argument(option);
}
template Argument Arguments::value(const std::string&, std::string&, const std::string&);
template Argument Arguments::value(const std::string&, std::vector<std::string>&, const std::string&);
template Argument Arguments::value(const std::string&, int64_t&, const std::string&);
template Argument Arguments::value(const std::string&, unsigned&, const std::string&);
template Argument Arguments::value(const std::string&, uint64_t&, const std::string&);
template Argument Arguments::value(const std::string&, double&, const std::string&);
template Argument Arguments::value(const std::string&, std::optional<unsigned>&, const std::string&);
template Argument Arguments::value(const std::string&, std::optional<uint64_t>&, const std::string&);

Argument Arguments::text(const std::string& names, const TakeText& take, const std::string& help) {
    const std::string spelling = names.substr(names.rfind(',') + 1);
    const auto act = [take, spelling](const std::vector<std::string>& texts) {
        for (const std::string& text : texts) {
            const std::string problem = take(text);
            if (!problem.empty()) throw CLI::ValidationError(spelling, problem);
        }
    };
    return Argument(*mApp.add_option_function<std::vector<std::string>>(names, act, help)
                         ->expected(1)
                         ->allow_extra_args(false));
}

template <class Value>
Argument Arguments::flag(const std::string& names, Value& value, const std::string& help) {
    return Argument(*mApp.add_flag(names, value, help));
}
template Argument Arguments::flag(const std::string&, bool&, const std::string&);
template Argument Arguments::flag(const std::string&, uint64_t&, const std::string&);

Argument Arguments::flag(const std::string& names, const std::function<void()>& act,
                         const std::string& help) {
    return Argument(*mApp.add_flag_callback(names, act, help));
}

void Arguments::footer(const std::string& text) {
    mApp.footer("Words such as unit, offered and master track are told in docs/words.md.\n" + text);
}

void Arguments::hide() {
    mApp.group("");
}

void Arguments::action(const Action& action) {
    mApp.callback([&chosen = mChosen, action] { chosen = action; });
}

// ---- CommandLine

CommandLine::CommandLine(const std::string& program, const std::string& version, const std::string& help)
    : mApp(std::make_unique<CLI::App>(help, program)), mEverywhere(*mApp, mChosen) {
    mApp->set_version_flag("--version", program + " " + version);
    mApp->require_subcommand(1);
    mApp->fallthrough();
}

CommandLine::~CommandLine() = default;

Arguments CommandLine::command(const std::string& name, const std::string& help) {
    return Arguments(*mApp->add_subcommand(name, help), mChosen);
}

std::optional<int> CommandLine::parse(int argc, char** argv) {
    try {
        mApp->parse(argc, argv);
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        if (dynamic_cast<const CLI::CallForHelp*>(&error) != nullptr) {
            fmt::print("{}", help());
            return error.get_exit_code();
        }
        if (error.get_exit_code() == 0) return mApp->exit(error);  // --version
        if (const auto word = wrongCommand(*mApp)) throw noSuchCommand(*this, *word);
        throw wrongUsage(*mApp, error.what());
    }
}

std::string CommandLine::help() const {
    return fittedToTerminal(mApp->help());
}

std::string CommandLine::help(const std::string& command) const {
    try {
        return fittedToTerminal(mApp->get_subcommand(command)->help(mApp->get_name()));
    } catch (const CLI::OptionNotFound&) {
        throw noSuchCommand(*this, command);
    }
}

}  // namespace mkvx
