// The exit code of a run: that of the worst verdict, unless options say what counts.
#pragma once
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "check/Model.h"
#include "cli/Arguments.h"

namespace mkvx {

struct GateOptions {
    std::optional<Verdict> failOn;      // verdicts better than this one count as "plays"
    std::vector<std::string> accepted;  // codes of findings that do not count, with commas between them
    bool exitZero = false;
};

// Adds --fail-on, --accept and --exit-zero.
void addGateOptions(Arguments& command, GateOptions& options);

class Gate {
  public:
    explicit Gate(const GateOptions& options);

    void take(const CheckedFile& checked);
    int exitCode() const;

  private:
    // As if what is accepted were not there.
    Verdict verdictOf(const CheckedFile& checked) const;

    const GateOptions& mOptions;
    std::set<std::string> mAccepted;
    Verdict mWorst = Verdict::kPlays;
};

}  // namespace mkvx
