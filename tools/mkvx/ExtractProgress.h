// A line on stderr that says how far a long piece of work has come: only on a terminal, and only once the
// work has taken more than a second.
#pragma once
#include <chrono>
#include <cstdint>
#include <string>

namespace mkvx {

class ExtractProgress {
  public:
    // `durationUs` 0: not known, bytes alone are shown.
    ExtractProgress(std::string what, int64_t durationUs);
    ~ExtractProgress();  // wipes the line
    ExtractProgress(const ExtractProgress&) = delete;
    ExtractProgress& operator=(const ExtractProgress&) = delete;

    void reach(int64_t timeUs, uint64_t bytes);

  private:
    using Clock = std::chrono::steady_clock;

    std::string mWhat;
    int64_t mDurationUs;
    bool mIsTerminal;
    bool mShown = false;
    Clock::time_point mNext;
};

}  // namespace mkvx
