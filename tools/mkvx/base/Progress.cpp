#include "base/Progress.h"

#include <fmt/format.h>
#include <unistd.h>
#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "base/Text.h"

namespace mkvx {
namespace {

// Of the work, as far as it can be told.
std::optional<double> shareOf(const ProgressState& state) {
    if (state.share) return std::clamp(*state.share, 0.0, 1.0);
    if (state.bytesTotal > 0) return std::min(1.0, double(state.bytes) / double(state.bytesTotal));
    if (state.filesTotal > 0) return std::min(1.0, double(state.files) / double(state.filesTotal));
    return std::nullopt;
}

std::optional<double> secondsLeft(const ProgressState& state, double seconds) {
    const std::optional<double> share = shareOf(state);
    if (!share || *share <= 0.001) return std::nullopt;
    return seconds * (1 - *share) / *share;
}

std::string clock(double seconds) {
    const auto whole = uint64_t(std::min(seconds, 3.6e7));
    return whole < 3600 ? fmt::format("{}:{:02}", whole / 60, whole % 60)
                        : fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60);
}

}  // namespace

Progress::Progress(std::string what, ProgressStyle style)
    : mWhat(std::move(what)),
      mStyle(style == ProgressStyle::kLine && ::isatty(STDERR_FILENO) == 0 ? ProgressStyle::kOff : style),
      mStart(Clock::now()),
      mNext(mStart + std::chrono::seconds(1)) {}

Progress::~Progress() {
    hide();
}

void Progress::hide() {
    if (mIsShown) std::fputs("\r\033[K", stderr);
    mIsShown = false;
}

void Progress::reach(const ProgressState& state) {
    if (mStyle == ProgressStyle::kOff) return;
    const Clock::time_point now = Clock::now();
    if (now < mNext) return;
    const bool isLine = mStyle == ProgressStyle::kLine;
    mNext = now + std::chrono::milliseconds(isLine ? 200 : 1000);
    const double seconds = std::chrono::duration<double>(now - mStart).count();
    const std::string text =
        isLine ? "\r" + lineOf(state, seconds) + "\033[K" : jsonOf(state, seconds) + "\n";
    std::fputs(text.c_str(), stderr);
    std::fflush(stderr);
    mIsShown = isLine;
}

void Progress::reachBytes(uint64_t bytes) {
    ProgressState state;
    state.bytes = bytes;
    reach(state);
}

std::string Progress::lineOf(const ProgressState& state, double seconds) const {
    std::string line = "mkvx: " + printable(mWhat) + ":";
    if (state.filesTotal > 0) line += fmt::format(" {} of {} files,", state.files, state.filesTotal);
    line += fmt::format(" {:.1f} MB", double(state.bytes) / 1e6);
    if (const auto share = shareOf(state)) line += fmt::format(", {:.0f} %", *share * 100);
    if (state.bytes > 0) line += fmt::format(", {:.1f} MB/s", double(state.bytes) / 1e6 / seconds);
    if (const auto left = secondsLeft(state, seconds)) line += fmt::format(", {} left", clock(*left));
    return line;
}

std::string Progress::jsonOf(const ProgressState& state, double seconds) const {
    const auto rounded = [](double value) { return double(int64_t(value * 10)) / 10; };
    nlohmann::ordered_json json;
    json["what"] = printable(mWhat);
    if (state.filesTotal > 0) {
        json["files"] = state.files;
        json["files_total"] = state.filesTotal;
    }
    json["bytes"] = state.bytes;
    if (state.bytesTotal > 0) json["bytes_total"] = state.bytesTotal;
    json["seconds"] = rounded(seconds);
    if (const auto left = secondsLeft(state, seconds)) json["seconds_left"] = rounded(*left);
    return nlohmann::ordered_json{{"progress", json}}.dump();
}

ProgressStyle besideListing(ProgressStyle style) {
    const bool isSeen = ::isatty(STDOUT_FILENO) != 0;
    return style == ProgressStyle::kLine && isSeen ? ProgressStyle::kOff : style;
}

}  // namespace mkvx
