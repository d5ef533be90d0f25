#include "library/Model.h"

#include <fmt/format.h>

#include "base/Terminal.h"
#include "base/Text.h"

namespace mkvx {
namespace {

using Align = TextTable::Align;

std::string megabytes(uint64_t bytes) {
    return fmt::format("{:.1f}", double(bytes) / 1e6);
}

void printFindings(const Summary& summary, std::FILE* out) {
    TextTable table({{"FINDING"}, {"WEIGHT"}, {"FILES", Align::kRight}, {"FOR INSTANCE"}});
    for (const FindingCount& count : summary.findings)
        table.addRow(
            {count.code, toString(count.weight), std::to_string(count.files), printable(count.example)});
    if (!summary.findings.empty()) fmt::print(out, "{}\n", table.str());
}

void printWorst(const Summary& summary, std::FILE* out) {
    TextTable table({{"VERDICT"}, {"MB", Align::kRight}, {"FILE"}});
    for (const JudgedFile& file : summary.worst)
        table.addRow(
            {describe(file.verdict), megabytes(file.size), printable(file.path + ": " + file.reason)});
    if (!summary.worst.empty()) fmt::print(out, "{}", table.str());
    if (summary.unlisted > 0) fmt::print(out, "... and {} more (--list N)\n", summary.unlisted);
    if (!summary.worst.empty() || summary.unlisted > 0) fmt::print(out, "\n");
}

std::string verdictsText(const FileDifference& file) {
    if (!file.before) return describe(*file.after);
    if (!file.after) return fmt::format("it was: {}", describe(*file.before));
    if (*file.before == *file.after) return fmt::format("{} as before", describe(*file.after));
    return fmt::format("{}, and now {}", describe(*file.before), describe(*file.after));
}

void printKeys(const std::string& word, const std::vector<FindingKey>& findings, std::FILE* out) {
    for (const FindingKey& finding : findings)
        fmt::print(out, "  {}: {}{} ({})\n", word,
                   finding.track ? fmt::format("track number {}: ", *finding.track) : "", finding.code,
                   toString(finding.weight));
}

std::string painted(const Paint& paint, FileDifference::Kind kind) {
    const std::string text = toString(kind);
    switch (kind) {
        case FileDifference::Kind::kBetter:
            return paint.good(text);
        case FileDifference::Kind::kWorse:
            return paint.bad(text);
        default:
            return paint.odd(text);
    }
}

}  // namespace

void printText(const Summary& summary, std::FILE* out) {
    printFindings(summary, out);
    printWorst(summary, out);
    fmt::print(out, "{}; {} MB\n", countsText(summary.verdicts), megabytes(summary.bytes));
}

void printText(const LibraryDifference& difference, std::FILE* out) {
    const Paint paint(out);
    std::map<FileDifference::Kind, uint64_t> counts;
    for (const FileDifference& file : difference.files) {
        ++counts[file.kind];
        fmt::print(out, "{}: {}: {}{}{}\n", painted(paint, file.kind), paint.strong(printable(file.path)),
                   verdictsText(file), file.reason.empty() ? "" : ": ", printable(file.reason));
        printKeys("gone", file.gone, out);
        printKeys("new", file.came, out);
    }
    std::string text = fmt::format("{} the same", difference.same);
    for (const auto& [kind, count] : counts) text += fmt::format(", {} {}", count, toString(kind));
    fmt::print(out, "{}\n", text);
}

}  // namespace mkvx
