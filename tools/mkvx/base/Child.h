// Work in a child process, so that neither an assertion nor a fault in it ends this one, and so that it can
// be cut off.
//
// The child is forked: start it while the process has a single thread. It has this process's memory, its log
// and stderr are silenced, and it dies with this process. What `work` writes to its descriptor arrives in
// output(). One thread.
#pragma once
#include <sys/types.h>
#include <functional>
#include <optional>
#include <string>

namespace mkvx {

class Child {
  public:
    // Throws std::runtime_error when there can be no child.
    explicit Child(const std::function<void(int out)>& work);
    ~Child();  // ends the child if it still runs
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    // For poll(): readable when more of the output is there, or at its end.
    int outputFd() const { return mOutput; }
    // Takes in what is there, waiting for at least something; false at the end. An interruption of the wait
    // ends the child.
    bool takeOutput();
    const std::string& output() const { return mText; }

    // Waits for the end. Nothing: the work came through. Otherwise what stopped it: the assertion's text, or
    // the signal; what a fault left on stderr is passed on then.
    std::optional<std::string> finish();
    // The same as waitpid() tells it, for a child that became another program; what that wrote to stderr is
    // in errors().
    int waitForEnd();
    std::string errors() const;
    void kill();

  private:
    std::optional<std::string> describeEnd(int status) const;

    pid_t mPid = -1;
    int mOutput = -1, mAssertion = -1, mErrors = -1;
    bool mWasKilled = false;
    std::string mText;
};

// Everything, until it is written or cannot be.
void writeAll(int fd, const std::string& text);

}  // namespace mkvx
