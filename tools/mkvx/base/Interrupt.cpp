#include "base/Interrupt.h"

#include <fmt/format.h>
#include <poll.h>
#include <algorithm>
#include <chrono>
#include <csignal>
#include <ctime>
#include <thread>

namespace mkvx {
namespace {

using Clock = std::chrono::steady_clock;

// A signal may come just before a wait begins: none lasts longer than this before the flag is looked at.
constexpr auto kTick = std::chrono::milliseconds(50);

// One Ctrl-C may reach a process twice, from the terminal and from a program that passes it on; a person's
// second one takes longer.
constexpr int64_t kSameMs = 300;

volatile std::sig_atomic_t flag = 0;
volatile int64_t flaggedAtMs = 0;
Clock::time_point watchedSince;

// A signal handler may call this.
int64_t nowMs() {
    timespec now = {};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return int64_t(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

void onSignal(int signal) {
    if (flag == 0) {
        flaggedAtMs = nowMs();
        flag = 1;
    } else if (nowMs() - flaggedAtMs > kSameMs) {
        std::signal(signal, SIG_DFL);
        std::raise(signal);  // comes when this handler is left
    }
}

void setHandlers(void (*handler)(int)) {
    for (const int signal : {SIGINT, SIGTERM}) {
        struct sigaction action = {};
        action.sa_handler = handler;
        action.sa_flags = SA_RESTART;  // writes go on; poll() and sleeps end all the same
        ::sigaction(signal, &action, nullptr);
    }
}

class InterruptibleSource : public android::DataSource {
  public:
    explicit InterruptibleSource(const android::sp<android::DataSource>& source) : mSource(source) {}

    android::status_t initCheck() const override { return mSource->initCheck(); }
    ssize_t readAt(off64_t offset, void* data, size_t size) override {
        return wasInterrupted() ? ssize_t(android::ERROR_IO) : mSource->readAt(offset, data, size);
    }
    android::status_t getSize(off64_t* size) override { return mSource->getSize(size); }
    uint32_t flags() override { return mSource->flags(); }
    android::String8 getUri() override { return mSource->getUri(); }
    android::String8 getMIMEType() const override { return mSource->getMIMEType(); }

  private:
    const android::sp<android::DataSource> mSource;
};

}  // namespace

void watchForInterruption() {
    watchedSince = Clock::now();
    setHandlers(onSignal);
}

void endWhenInterrupted() {
    setHandlers(SIG_DFL);
}

void leaveInterruptionToParent() {
    setHandlers(SIG_IGN);
    flag = 0;
}

bool wasInterrupted() {
    return flag != 0;
}

void throwIfInterrupted(const std::string& file, const std::string& reached) {
    if (wasInterrupted()) throw Interrupted(fmt::format("{}: interrupted after {}", file, reached));
}

void throwIfInterrupted(const std::string& file) {
    if (wasInterrupted()) throw Interrupted(file + ": " + interruptedBeforeResult());
}

std::string interruptedBeforeResult() {
    const double seconds = std::chrono::duration<double>(Clock::now() - watchedSince).count();
    return fmt::format("interrupted after {:.1f} s, before there was a result", seconds);
}

bool waitToRead(int fd) {
    pollfd polled = {fd, POLLIN, 0};
    while (true) {
        const int ready = ::poll(&polled, 1, wasInterrupted() ? 0 : int(kTick.count()));
        if (ready > 0) return true;
        if (wasInterrupted()) return false;
    }
}

void sleepFor(uint64_t microseconds) {
    const Clock::time_point end = Clock::now() + std::chrono::microseconds(microseconds);
    for (auto now = Clock::now(); now < end && !wasInterrupted(); now = Clock::now())
        std::this_thread::sleep_for(std::min<Clock::duration>(kTick, end - now));
}

android::sp<android::DataSource> interruptible(const android::sp<android::DataSource>& source) {
    return new InterruptibleSource(source);
}

}  // namespace mkvx
