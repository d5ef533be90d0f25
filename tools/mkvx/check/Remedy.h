// What mends a file: said of one finding, for people to copy and for scripts to run. Plan.h puts all of a
// file's together. The result is always a new file, and never has a finding that the file did not have: laces
// in particular, which the muxer would make of small frames when left alone.
#pragma once
#include <cstddef>
#include <string>
#include <vector>

namespace mkvx {

struct Remedy {
    enum class Action {
        kNone,     // nothing mends it
        kAdvice,   // words only
        kRewrite,  // written anew by a muxer: what is whole is kept, with Duration, Cues and lengths made
                   // right
        kCopy,     // the same, by the one that also undoes rarer encodings
        kRecode,   // the finding's track coded again
        kDrop,     // the finding's track left out
        kArrange,  // the tracks that are offered in front of the others, numbered from 1 on
    };

    Action action = Action::kNone;
    std::string encoder;  // of kRecode, as ffmpeg names it
    std::vector<std::string>
        command;  // for this finding alone: a program and its arguments; empty for advice
    std::string
        text;  // the command as a shell takes it, advice in front of it or in its place; empty for kNone

    Remedy() = default;
    Remedy(std::string advice)  // words that stand for themselves
        : action(advice.empty() ? Action::kNone : Action::kAdvice), text(std::move(advice)) {}
    Remedy(const char* advice) : Remedy(std::string(advice)) {}

    bool empty() const { return text.empty(); }
    bool hasCommand() const { return !command.empty(); }
};
// "rewrite", "recode", ...
const char* toString(Remedy::Action action);
// kNone for a name that is none.
Remedy::Action actionNamed(const std::string& name);

// A path that no program takes for an option; FILE for standard input, and for one that people cannot type.
std::string pathWord(const std::string& path);
// The same, or a whole command, as a shell takes it.
std::string shellWord(const std::string& path);
std::string shellLine(const std::vector<std::string>& command);

// What ffmpeg is told to code with, "libx264" for instance, and what that one needs on top. `stream` is its
// specifier in the new file: "v:0".
std::vector<std::string> encoderArguments(const std::string& stream, const std::string& encoder);

Remedy remuxCommand(const std::string& path);
Remedy copyCommand(const std::string& path);
// `kind` is 'v', 'a' or 's', `ordinal` the track's place among its kind, from 0.
Remedy recodeCommand(const std::string& path, char kind, size_t ordinal, const std::string& encoder);
Remedy dropCommand(const std::string& path, char kind, size_t ordinal);
// WebVTT as SubRip in its place; `entry` counts from 0.
Remedy webvttCommand(const std::string& path, size_t entry);
// Only these TrackEntries, counted from 0, which are then numbered from 1 on.
Remedy selectCommand(const std::string& path, const std::vector<size_t>& entries);

}  // namespace mkvx
