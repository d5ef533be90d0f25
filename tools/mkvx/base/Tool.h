// Another program, run to its end. Its standard input is empty, its standard output is read line by line, and
// what it writes to stderr is kept. It dies with this process. One thread; start it while the process has no
// other.
#pragma once
#include <functional>
#include <string>
#include <vector>

namespace mkvx {

// Is there a program of this name in PATH?
bool isInstalled(const std::string& program);

struct ToolEnd {
    int code = 0;           // its exit code; 128 and the signal's number for one that a signal ended
    std::string lastWords;  // the last line of what it said on stderr, or else on standard output; printable
};

// Runs a program of PATH with its arguments in `folder`. `onLine` gets each line of its standard output,
// which may end with a carriage return as well. An interruption (SIGINT, SIGTERM) kills it. Throws
// std::runtime_error when there can be no child.
ToolEnd runTool(const std::vector<std::string>& command, const std::string& folder,
                const std::function<void(const std::string& line)>& onLine);

}  // namespace mkvx
