// A timer for a scope: measures wall-clock time from its construction and logs it when it ends.
// One object belongs to one thread. Lines are logged as errors under the tag "Utils", so that no filter hides
// them.
#pragma once

#include <memory>

#include <sys/time.h>

#pragma GCC visibility push(default)

namespace android {

class MeasureTime {
  public:
    // `name` is copied; null counts as the empty text.
    explicit MeasureTime(const char* name);
    // Logs the elapsed time when it is 2 ms or more.
    virtual ~MeasureTime();

    MeasureTime(const MeasureTime&) = delete;
    MeasureTime& operator=(const MeasureTime&) = delete;

    void resetStartTime();

    // Milliseconds from the start to `now`, truncated; 0 when the clock was set back in between.
    unsigned int measure(timeval* now);

    // Logs the elapsed time, however short. `suffix` (null allowed) tells apart the lines of one timer.
    void PrintCostTime(const char* suffix);

  private:
    timeval mStart;
    std::unique_ptr<char[]> mName;  // NUL-terminated, null where memory lacked
};

}  // namespace android

#pragma GCC visibility pop
