// What a command takes, declared: positional arguments, options, flags. The only way in which this program's
// commands know the library that parses the command line.
//
// A declaration names the variable that receives the value; the variable holds the default and has to live
// until the command has run. Names are "FILE" for a positional argument, "--track" or "-o,--output" for an
// option. A value that does not fit is reported to the user by CommandLine::parse(). One thread.
#pragma once
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace mkvx {

// The work of the chosen command; returns an ExitCode, or throws what Failure.h declares.
using Action = std::function<int()>;
// Takes the text that a user wrote; says what is wrong with it, empty for nothing.
using TakeText = std::function<std::string(const std::string& text)>;

// What is said about one argument after its declaration.
class Argument {
  public:
    explicit Argument(CLI::Option& option) : mOption(option) {}

    Argument& required();
    // May be given several times, one value each, for a variable that is a list.
    Argument& repeatable();
    Argument& oneOf(const std::vector<std::string>& words);
    // From `least` to `most`, both allowed. For int, unsigned, uint64_t and double.
    template <class Number>
    Argument& within(Number least, Number most);
    Argument& positive();
    // `shape` is how the help texts describe a good value.
    Argument& checked(const TakeText& check, const std::string& shape);
    // Only one of the two may be given.
    Argument& insteadOf(const Argument& other);
    // The help texts call the value so.
    Argument& called(const std::string& type);
    // The help texts list it under this heading.
    Argument& under(const std::string& heading);
    // The help texts show what the variable holds now, or this.
    Argument& showDefault();
    Argument& showDefault(const std::string& text);

  private:
    CLI::Option& mOption;
};

class Arguments {
  public:
    Arguments(CLI::App& app, Action& chosen) : mApp(app), mChosen(chosen) {}

    // For std::string, a std::vector of it, int64_t, unsigned, uint64_t, double, and either unsigned as
    // optional.
    template <class Value>
    Argument value(const std::string& names, Value& value, const std::string& help);
    // The value goes to a function; of one that is repeatable, each.
    Argument text(const std::string& names, const TakeText& take, const std::string& help);
    // For bool, and for uint64_t with names such as "--each{100}", where 100 is what the bare flag means.
    template <class Value>
    Argument flag(const std::string& names, Value& value, const std::string& help);
    Argument flag(const std::string& names, const std::function<void()>& act, const std::string& help);

    // Stands below the options in the help texts, behind where their words are told. "Example: " begins the
    // command lines of examples, which go on over the lines that are indented.
    void footer(const std::string& text);
    // Keeps the command out of every list.
    void hide();
    // What is done when the command was chosen.
    void action(const Action& action);

  private:
    CLI::App& mApp;
    Action& mChosen;
};

class CommandLine {
  public:
    CommandLine(const std::string& program, const std::string& version, const std::string& help);
    ~CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    // What every command takes.
    Arguments& everywhere() { return mEverywhere; }
    Arguments command(const std::string& name, const std::string& help);

    // The exit code when nothing is left to do: help or version were asked for and printed. Throws
    // UsageFailure.
    std::optional<int> parse(int argc, char** argv);
    // The work of the command that parse() found.
    int run() const { return mChosen(); }

    // What --help prints, broken at the width of the terminal that standard output is.
    std::string help() const;
    // What --help of that command prints. Throws UsageFailure where there is none of this name.
    std::string help(const std::string& command) const;
    // For those who tell the help texts in another form.
    const CLI::App& app() const { return *mApp; }

  private:
    std::unique_ptr<CLI::App> mApp;
    Action mChosen;
    Arguments mEverywhere;
};

}  // namespace mkvx
