// One plan for a file: the remedies of all its findings in one new file, where each on its own would write a
// file that has the others' faults still.
#pragma once
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "check/Model.h"

namespace mkvx {

// A program and its arguments.
using ToolCommand = std::vector<std::string>;

struct MendPlan {
    struct Stream {
        size_t entry = 0;       // the TrackEntry's place in the file, from 0
        char kind = 'v';        // 'v', 'a' or 's'
        size_t ordinal = 0;     // among its kind in the file
        std::string encoder;    // as ffmpeg names it; empty where the stream is copied
        bool isWebVtt = false;  // which ffmpeg does not take from Matroska
    };

    std::vector<Stream> streams;   // of the new file, in its order
    std::vector<size_t> leftOut;   // places of the TrackEntries that are not in it
    size_t findings = 0;           // whose remedies it holds
    bool isArranged = false;       // the streams' order is not the file's
    bool prefersMkvmerge = false;  // else ffmpeg

    bool recodes() const;
    // Does it come to no more than writing the file anew?
    bool isRewriting() const { return !recodes() && !isArranged && leftOut.empty(); }
};

// Nothing where no finding has a remedy that can be run.
std::optional<MendPlan> planFor(const CheckedFile& checked);
// The same without the tracks that no device is offered either way: for tools that stop at them. Nothing
// where there are none, or no others.
std::optional<MendPlan> planWithoutUnoffered(const CheckedFile& checked, const MendPlan& plan);

// What to run, one behind the other, from `path` to `out`, both as programs take them. Files in between come
// into the working folder.
std::vector<ToolCommand> ffmpegCommands(const MendPlan& plan, const std::string& path,
                                        const std::string& out);
// Only of a plan that isRewriting().
std::vector<ToolCommand> mkvmergeCommands(const std::string& path, const std::string& out);
// With the tool that the plan prefers.
std::vector<ToolCommand> commandsOf(const MendPlan& plan, const std::string& path, const std::string& out);
// As one line for a shell.
std::string shellLine(const std::vector<ToolCommand>& commands);

// What is said of the file as a whole: the plan's commands where it holds more than one finding's remedy.
// Empty elsewhere.
Remedy remedyOfAll(const CheckedFile& checked);

}  // namespace mkvx
