#include "library/Difference.h"

#include <algorithm>
#include <iterator>

namespace mkvx {
namespace {

using Kind = FileDifference::Kind;

std::vector<FindingKey> missingIn(const std::set<FindingKey>& some, const std::set<FindingKey>& others) {
    std::vector<FindingKey> missing;
    std::set_difference(some.begin(), some.end(), others.begin(), others.end(), std::back_inserter(missing));
    return missing;
}

bool isAnyGrave(const std::vector<FindingKey>& findings) {
    return std::any_of(findings.begin(), findings.end(),
                       [](const FindingKey& finding) { return finding.weight > Weight::kNote; });
}

Kind kindOf(const FileDifference& difference) {
    if (*difference.after < *difference.before) return Kind::kBetter;
    if (*difference.after > *difference.before) return Kind::kWorse;
    const bool went = isAnyGrave(difference.gone), came = isAnyGrave(difference.came);
    if (went == came) return Kind::kChanged;
    return went ? Kind::kBetter : Kind::kWorse;
}

std::optional<FileDifference> differenceOf(const JudgedFile& before, const JudgedFile& after) {
    FileDifference difference;
    difference.path = after.path;
    difference.before = before.verdict;
    difference.after = after.verdict;
    difference.reason = after.reason;
    difference.gone = missingIn(before.findings, after.findings);
    difference.came = missingIn(after.findings, before.findings);
    const bool isSame = before.verdict == after.verdict && difference.gone.empty() && difference.came.empty();
    if (isSame) return std::nullopt;
    difference.kind = kindOf(difference);
    return difference;
}

}  // namespace

const char* toString(Kind kind) {
    static constexpr const char* kNames[] = {"better", "worse", "changed", "new", "gone"};
    return kNames[static_cast<size_t>(kind)];
}

LibraryDifference differenceOf(const JudgedFiles& before, const JudgedFiles& after) {
    LibraryDifference all;
    for (const auto& [path, file] : after.byPath) {
        const auto old = before.byPath.find(path);
        if (old == before.byPath.end())
            all.files.push_back({Kind::kNew, path, std::nullopt, file.verdict, file.reason, {}, {}});
        else if (auto difference = differenceOf(old->second, file))
            all.files.push_back(std::move(*difference));
        else
            ++all.same;
    }
    for (const auto& [path, file] : before.byPath)
        if (after.byPath.count(path) == 0)
            all.files.push_back({Kind::kGone, path, file.verdict, std::nullopt, "", {}, {}});
    std::stable_sort(all.files.begin(), all.files.end(),
                     [](const FileDifference& a, const FileDifference& b) { return a.kind < b.kind; });
    return all;
}

}  // namespace mkvx
