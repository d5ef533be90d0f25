#include "Probe.h"

#include <android/log.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "Log.h"

namespace mkvx {
namespace {

constexpr int kExitAsserted = 86;  // told apart from a sanitizer's own exit codes

int assertionFd = -1;

void writeAll(int fd, const char* data, size_t size) {
    while (size > 0) {
        const ssize_t n = ::write(fd, data, size);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return;
        data += n;
        size -= size_t(n);
    }
}

std::string readAll(int fd) {
    std::string text;
    char chunk[512];
    ::lseek(fd, 0, SEEK_SET);
    for (ssize_t n; (n = ::read(fd, chunk, sizeof chunk)) > 0;) text.append(chunk, size_t(n));
    return text;
}

// Leaves before abort() would: no core file, no sanitizer report for an assertion that is meant.
void onAssertion(const char* text) {
    writeAll(assertionFd, text, std::strlen(text));
    ::_exit(kExitAsserted);
}

[[noreturn]] void runChild(const std::function<void()>& work, int assertionOut, int stderrOut) {
    ::dup2(stderrOut, STDERR_FILENO);
    assertionFd = assertionOut;
    __android_log_set_aborter(onAssertion);
    MuteLog mute;
    try {
        work();
    } catch (...) {
        // A failure that has a sentence of its own is met again, and told, by the parent.
    }
    ::_exit(0);
}

struct MemoryFile {
    explicit MemoryFile(const char* name) : fd(::memfd_create(name, MFD_CLOEXEC)) {
        if (fd < 0) throw std::runtime_error("cannot make a file in memory");
    }
    ~MemoryFile() { ::close(fd); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    const int fd;
};

}  // namespace

std::optional<std::string> whatStops(const std::function<void()>& work) {
    MemoryFile assertion("assertion"), errors("stderr");
    std::fflush(stdout);
    std::fflush(stderr);
    const pid_t child = ::fork();
    if (child < 0) throw std::runtime_error("cannot start a child process");
    if (child == 0) runChild(work, assertion.fd, errors.fd);

    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return std::nullopt;
    if (WIFEXITED(status) && WEXITSTATUS(status) == kExitAsserted) return readAll(assertion.fd);
    // Not by design: whatever the child had to say (a sanitizer's report) is worth seeing.
    const std::string report = readAll(errors.fd);
    writeAll(STDERR_FILENO, report.data(), report.size());
    if (WIFSIGNALED(status))
        return "signal " + std::to_string(WTERMSIG(status)) + " (" + ::strsignal(WTERMSIG(status)) + ")";
    return "exit code " + std::to_string(WEXITSTATUS(status));
}

}  // namespace mkvx
