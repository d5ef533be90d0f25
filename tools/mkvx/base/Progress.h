// How far a long piece of work has come, on stderr: a line that renews itself, or JSON lines. Nothing appears
// before the work has taken a second, and no line where stderr is no terminal.
//
// As JSON: {"progress":{"what":...,"files":3,"files_total":10,"bytes":...,"bytes_total":...,
// "seconds":...,"seconds_left":...}}, where what is not known is absent. One thread.
#pragma once
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace mkvx {

enum class ProgressStyle { kLine, kJson, kOff };

struct ProgressState {
    uint64_t files = 0, filesTotal = 0;  // a total of 0: does not apply or is not known
    uint64_t bytes = 0, bytesTotal = 0;
    std::optional<double> share;  // 0 to 1, where bytes do not tell it
};

class Progress {
  public:
    Progress(std::string what, ProgressStyle style);
    ~Progress();  // wipes the line
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // As often as it suits: what is shown is renewed five times a second, JSON once a second.
    void reach(const ProgressState& state);
    // Where bytes are all that is known.
    void reachBytes(uint64_t bytes);
    // Wipes the line before something else is printed to the terminal.
    void hide();

  private:
    using Clock = std::chrono::steady_clock;

    std::string lineOf(const ProgressState& state, double seconds) const;
    std::string jsonOf(const ProgressState& state, double seconds) const;

    std::string mWhat;
    ProgressStyle mStyle;
    bool mIsShown = false;
    Clock::time_point mStart, mNext;
};

// For work that lists as it goes: on a terminal its lines show how far it has come, and another one between
// them would only be in the way.
ProgressStyle besideListing(ProgressStyle style);

}  // namespace mkvx
