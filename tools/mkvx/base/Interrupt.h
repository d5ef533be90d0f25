// An interruption by the user: Ctrl-C (SIGINT), or SIGTERM.
//
// The first one only sets a flag. What a file drives asks for it: byte sources fail every read from then on,
// a TrackReader answers its end, so that even work inside the plug-in is over soon. Nothing that was read
// after the interruption is part of a result. The command prints what it has and throws Interrupted, which
// main() turns into a sentence and exit code 130. A second interruption ends the process at once.
#pragma once
#include <media/stagefright/DataSource.h>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace mkvx {

// From now on interruptions set the flag. For the process's life, or up to endWhenInterrupted().
void watchForInterruption();
// Back to ending at once: for work that looks at no flag.
void endWhenInterrupted();
// A child process has its parent decide what an interruption ends.
void leaveInterruptionToParent();

bool wasInterrupted();

// What the command has to say of it: "FILE: interrupted after 12 units".
class Interrupted : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Throws Interrupted when there was an interruption: "FILE: interrupted after REACHED".
void throwIfInterrupted(const std::string& file, const std::string& reached);
// The same with the time that went by since watchForInterruption(): for a result that is there as a whole or
// not at all.
void throwIfInterrupted(const std::string& file);

// "interrupted after 1.5 s, before there was a result".
std::string interruptedBeforeResult();

// Does the work. What it throws after an interruption may be that one's doing, and goes no further: what was
// found until then is to be printed.
template <typename Work>
void untilInterrupted(const Work& work) {
    try {
        work();
    } catch (const std::exception&) {
        if (!wasInterrupted()) throw;
    }
}

// Waits until the descriptor can be read, or is at its end. False after an interruption that came first.
bool waitToRead(int fd);
// Not after an interruption, and no longer than up to one.
void sleepFor(uint64_t microseconds);

// The source, whose reads fail with ERROR_IO after an interruption.
android::sp<android::DataSource> interruptible(const android::sp<android::DataSource>& source);

}  // namespace mkvx
