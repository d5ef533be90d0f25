#include "mend/Model.h"

#include <fmt/format.h>

#include "base/Terminal.h"
#include "base/Text.h"
#include "check/Plan.h"

namespace mkvx {
namespace {

void printVerdict(const Paint& paint, const std::string& path, Verdict verdict, const std::string& reason,
                  std::FILE* out) {
    printFitted(out, 0,
                fmt::format("{}: {}{}{}", paint.strong(printable(path)), describe(verdict),
                            reason.empty() ? "" : ": ", printable(reason)));
}

void printFindings(const std::string& word, const std::vector<FindingOfTrack>& findings, std::FILE* out) {
    for (const FindingOfTrack& found : findings) {
        printFitted(out, 2,
                    fmt::format("{}: {}{}{}", word, found.finding.weight == Weight::kNote ? "note: " : "",
                                found.track ? fmt::format("track number {}: ", *found.track) : "",
                                printable(found.finding.sentence)));
        if (found.finding.remedy.action == Remedy::Action::kAdvice)
            printFitted(out, 6, printable(found.finding.remedy.text));
    }
}

void printAttempts(const MendReport& report, std::FILE* out) {
    for (const MendAttempt& attempt : report.attempts) {
        fmt::print(out, "  {}\n", shellLine(attempt.commands));
        if (!attempt.problem.empty()) printFitted(out, 4, "not taken: " + printable(attempt.problem));
    }
}

}  // namespace

void printText(const MendReport& report, std::FILE* out) {
    const Paint paint(out);
    printVerdict(paint, report.file, report.before, report.reason, out);
    printAttempts(report, out);
    if (report.after) printVerdict(paint, report.output, *report.after, report.reasonAfter, out);
    if (!report.after && !report.isDryRun)
        fmt::print(
            out, "{}: not written, for {}\n", printable(report.output),
            report.attempts.empty() ? "there is nothing that a command could mend" : "it would be no better");
    for (const uint64_t number : report.leftOut) fmt::print(out, "  left out: track number {}\n", number);
    printFindings(paint.good("gone"), report.changes.gone, out);
    printFindings(paint.odd("stays"), report.changes.stays, out);
    printFindings(paint.bad("new"), report.changes.came, out);
}

}  // namespace mkvx
