// The two ways in which a command ends without its result. Both are caught once, in main(), which turns them
// into one sentence on stderr and an exit code.
#pragma once
#include <stdexcept>
#include <string>

namespace mkvx {

enum ExitCode {
    kExitDone = 0,
    kExitFileUnusable = 1,
    kExitWrongUsage = 2,
    // Of commands that compare; what fails has kExitWrongUsage there.
    kExitSame = 0,
    kExitDiffers = 1,
    // What an examination found, where that is more than "usable or not".
    kExitLosses = 3,
    kExitNothingPlays = 4,
    kExitStopsProcess = 5,
    kExitUndecided = 6,
    kExitInterrupted = 130,  // as a shell counts an end by SIGINT
};

// The file cannot be used: "FILE: reason".
class FileFailure : public std::runtime_error {
  public:
    FileFailure(const std::string& file, const std::string& reason)
        : std::runtime_error(file + ": " + reason) {}
};

// The command line asks for something that this file or this program does not have.
class UsageFailure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

}  // namespace mkvx
