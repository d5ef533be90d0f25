#include "base/Tool.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <cstdlib>
#include <sstream>

#include "base/Child.h"
#include "base/Text.h"

namespace mkvx {
namespace {

constexpr int kExitNotStarted = 127;  // as a shell has it

// In the child: becomes the program.
[[noreturn]] void become(const std::vector<std::string>& command, const std::string& folder, int out) {
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    const int nothing = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    const bool isSet = nothing >= 0 && ::dup2(nothing, STDIN_FILENO) >= 0 &&
                       ::dup2(out, STDOUT_FILENO) >= 0 && ::chdir(folder.c_str()) == 0;
    if (isSet) ::execvp(arguments[0], arguments.data());
    ::_exit(kExitNotStarted);
}

// Hands out whole lines of a text that grows.
class LineCutter {
  public:
    explicit LineCutter(const std::function<void(const std::string&)>& onLine) : mOnLine(onLine) {}

    void cut(const std::string& text) {
        for (size_t end; (end = text.find_first_of("\r\n", mDone)) != std::string::npos; mDone = end + 1) {
            if (end == mDone) continue;
            mLast = text.substr(mDone, end - mDone);
            mOnLine(mLast);
        }
    }
    const std::string& last() const { return mLast; }

  private:
    const std::function<void(const std::string&)>& mOnLine;
    size_t mDone = 0;
    std::string mLast;
};

std::string lastLineOf(const std::string& text) {
    std::istringstream lines(text);
    std::string last;
    for (std::string line; std::getline(lines, line);)
        if (!line.empty() && line[0] != ' ') last = line;  // such lines go with the one in front
    return last;
}

}  // namespace

bool isInstalled(const std::string& program) {
    const char* path = std::getenv("PATH");
    std::istringstream folders(path != nullptr ? path : "");
    for (std::string folder; std::getline(folders, folder, ':');)
        if (::access(folder.append("/").append(program).c_str(), X_OK) == 0) return true;
    return false;
}

ToolEnd runTool(const std::vector<std::string>& command, const std::string& folder,
                const std::function<void(const std::string& line)>& onLine) {
    Child child([&](int out) { become(command, folder, out); });
    LineCutter cutter(onLine);
    while (child.takeOutput()) cutter.cut(child.output());
    const int status = child.waitForEnd();
    std::string words = lastLineOf(child.errors());
    if (words.empty()) words = cutter.last();
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), printable(words)};
}

}  // namespace mkvx
