#include "check/Gate.h"

#include <algorithm>
#include <sstream>

#include "base/Failure.h"
#include "check/File.h"

namespace mkvx {
namespace {

// "a,b"
void addCodes(const std::string& text, std::set<std::string>& codes) {
    std::istringstream list(text);
    for (std::string code; std::getline(list, code, ',');)
        if (!code.empty()) codes.insert(code);
}

bool isJudgedByFindings(Verdict verdict) {
    return verdict == Verdict::kPlaysWithLosses || verdict == Verdict::kNothingPlays ||
           verdict == Verdict::kStops;
}

bool isGrave(const Finding& finding) {
    return finding.weight > Weight::kNote;
}

// Of the file and of its tracks.
bool hasGraveFinding(const CheckedFile& checked) {
    const auto isAnyGrave = [](const std::vector<Finding>& findings) {
        return std::any_of(findings.begin(), findings.end(), isGrave);
    };
    return isAnyGrave(checked.findings) ||
           std::any_of(checked.tracks.begin(), checked.tracks.end(), [&](const TrackVerdict& track) {
               return track.dropped || isAnyGrave(track.findings);
           });
}

CheckedFile without(CheckedFile checked, const std::set<std::string>& codes) {
    const auto forget = [&](std::vector<Finding>& findings) {
        findings.erase(std::remove_if(findings.begin(), findings.end(),
                                      [&](const Finding& found) { return codes.count(found.code) != 0; }),
                       findings.end());
    };
    forget(checked.findings);
    for (TrackVerdict& track : checked.tracks) {
        forget(track.findings);
        if (track.dropped && codes.count(track.dropped->code) != 0) track.dropped.reset();
    }
    return checked;
}

}  // namespace

void addGateOptions(Arguments& command, GateOptions& options) {
    std::vector<std::string> verdicts;
    for (const Verdict verdict : kVerdicts)
        if (verdict != Verdict::kPlays) verdicts.push_back(toString(verdict));
    const auto chooseVerdict = [&options](const std::string& name) {
        for (const Verdict verdict : kVerdicts)
            if (name == toString(verdict)) options.failOn = verdict;
        return std::string();
    };
    command.text("--fail-on", chooseVerdict, "Exit with 0 unless a file's verdict is this one or worse")
        .oneOf(verdicts);
    command.value("--accept", options.accepted, "Findings with these codes do not count for the exit code")
        .repeatable()
        .called("CODE[,CODE]...");
    command.flag("--exit-zero", options.exitZero, "Exit with 0 whatever was found");
}

Gate::Gate(const GateOptions& options) : mOptions(options) {
    for (const std::string& codes : options.accepted) addCodes(codes, mAccepted);
}

Verdict Gate::verdictOf(const CheckedFile& checked) const {
    if (mAccepted.empty()) return checked.verdict;
    CheckedFile rest = without(checked, mAccepted);
    if (rest.findings.size() == checked.findings.size() && !isJudgedByFindings(checked.verdict))
        return checked.verdict;
    if (!hasGraveFinding(rest)) return Verdict::kPlays;
    if (isJudgedByFindings(checked.verdict)) decide(rest);
    return rest.verdict;
}

void Gate::take(const CheckedFile& checked) {
    mWorst = std::max(mWorst, verdictOf(checked));
}

int Gate::exitCode() const {
    const bool isAllowed = mOptions.exitZero || (mOptions.failOn && mWorst < *mOptions.failOn);
    return isAllowed ? int(kExitDone) : exitCodeOf(mWorst);
}

}  // namespace mkvx
