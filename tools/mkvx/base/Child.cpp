#include "base/Child.h"

#include <android/log.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "base/Interrupt.h"
#include "base/Log.h"

namespace mkvx {
namespace {

constexpr int kExitAsserted = 86;  // told apart from a sanitizer's own exit codes
constexpr size_t kMostOutput = 256u << 20;

int assertionFd = -1;

std::string readFromStart(int fd) {
    std::string text;
    char chunk[512];
    ::lseek(fd, 0, SEEK_SET);
    for (ssize_t n; (n = ::read(fd, chunk, sizeof chunk)) > 0;) text.append(chunk, size_t(n));
    return text;
}

// Leaves before abort() would: no core file, no sanitizer report for an assertion that is meant.
void onAssertion(const char* text) {
    writeAll(assertionFd, text);
    ::_exit(kExitAsserted);
}

int memoryFile(const char* name) {
    const int fd = ::memfd_create(name, MFD_CLOEXEC);
    if (fd < 0) throw std::runtime_error("cannot make a file in memory");
    return fd;
}

void closeIfOpen(int fd) {
    if (fd >= 0) ::close(fd);
}

[[noreturn]] void runChild(const std::function<void(int)>& work, int out, int assertionOut, int stderrOut) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    leaveInterruptionToParent();
    ::dup2(stderrOut, STDERR_FILENO);
    assertionFd = assertionOut;
    __android_log_set_aborter(onAssertion);
    MuteLog mute;
    try {
        work(out);
    } catch (...) {
        // A failure that has a sentence of its own is met again, and told, by the parent.
    }
    ::_exit(0);
}

}  // namespace

void writeAll(int fd, const std::string& text) {
    const char* data = text.data();
    for (size_t left = text.size(); left > 0;) {
        const ssize_t n = ::write(fd, data, left);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return;
        data += n;
        left -= size_t(n);
    }
}

Child::Child(const std::function<void(int out)>& work) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("cannot make a pipe");
    mOutput = ends[0];
    mAssertion = memoryFile("assertion");
    mErrors = memoryFile("stderr");
    std::fflush(stdout);
    std::fflush(stderr);
    mPid = ::fork();
    if (mPid == 0) runChild(work, ends[1], mAssertion, mErrors);
    ::close(ends[1]);
    if (mPid < 0) throw std::runtime_error("cannot start a child process");
}

Child::~Child() {
    if (mPid > 0) {
        kill();
        (void)finish();
    }
    closeIfOpen(mOutput);
    closeIfOpen(mAssertion);
    closeIfOpen(mErrors);
}

bool Child::takeOutput() {
    if (!waitToRead(mOutput)) kill();
    char chunk[16384];
    ssize_t n;
    while ((n = ::read(mOutput, chunk, sizeof chunk)) < 0 && errno == EINTR) {
    }
    if (n > 0) mText.append(chunk, size_t(n));
    if (mText.size() > kMostOutput) kill();
    return n > 0 && mText.size() <= kMostOutput;
}

void Child::kill() {
    if (mPid > 0) ::kill(mPid, SIGKILL);
    mWasKilled = true;
}

int Child::waitForEnd() {
    int status = 0;
    while (mPid > 0 && ::waitpid(mPid, &status, 0) < 0 && errno == EINTR) {
    }
    mPid = -1;
    return status;
}

std::string Child::errors() const {
    return readFromStart(mErrors);
}

std::optional<std::string> Child::finish() {
    return describeEnd(waitForEnd());
}

std::optional<std::string> Child::describeEnd(int status) const {
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return std::nullopt;
    if (WIFEXITED(status) && WEXITSTATUS(status) == kExitAsserted) return readFromStart(mAssertion);
    if (mWasKilled) return "cut off";
    // Not by design: whatever the child had to say (a sanitizer's report) is worth seeing.
    writeAll(STDERR_FILENO, errors());
    if (WIFSIGNALED(status))
        return "signal " + std::to_string(WTERMSIG(status)) + " (" + ::strsignal(WTERMSIG(status)) + ")";
    return "exit code " + std::to_string(WEXITSTATUS(status));
}

}  // namespace mkvx
