#include "ExtractProgress.h"

#include <fmt/format.h>
#include <unistd.h>
#include <algorithm>
#include <cstdio>

namespace mkvx {

ExtractProgress::ExtractProgress(std::string what, int64_t durationUs)
    : mWhat(std::move(what)),
      mDurationUs(durationUs),
      mIsTerminal(::isatty(STDERR_FILENO) != 0),
      mNext(Clock::now() + std::chrono::seconds(1)) {}

ExtractProgress::~ExtractProgress() {
    if (mShown) std::fputs("\r\033[K", stderr);
}

void ExtractProgress::reach(int64_t timeUs, uint64_t bytes) {
    if (!mIsTerminal) return;
    const Clock::time_point now = Clock::now();
    if (now < mNext) return;
    mNext = now + std::chrono::milliseconds(200);
    mShown = true;
    const double megabytes = double(bytes) / 1e6;
    const double share = mDurationUs > 0 ? 100.0 * double(timeUs) / double(mDurationUs) : 0;
    std::string line = fmt::format("\rmkvx: {}: {:.1f} MB", mWhat, megabytes);
    if (mDurationUs > 0) line += fmt::format(", {:.0f} %", std::clamp(share, 0.0, 100.0));
    std::fputs((line + "\033[K").c_str(), stderr);
    std::fflush(stderr);
}

}  // namespace mkvx
