#include "library/Summary.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace mkvx {
namespace {

// Each code once a file.
void countFindings(const JudgedFile& file, std::map<std::string, FindingCount>& counts) {
    std::set<std::string> told;
    for (const FindingKey& finding : file.findings) {
        FindingCount& count = counts[finding.code];
        count.weight = std::max(count.weight, finding.weight);
        if (!told.insert(finding.code).second) continue;
        count.code = finding.code;
        if (count.files++ == 0) count.example = file.path;  // files come by path
    }
}

}  // namespace

Summary summaryOf(const JudgedFiles& judged, size_t mostListed) {
    Summary summary;
    summary.superseded = judged.superseded;
    summary.files = judged.byPath.size();
    std::map<std::string, FindingCount> counts;
    std::vector<const JudgedFile*> worst;
    for (const auto& [path, file] : judged.byPath) {
        ++summary.verdicts[file.verdict];
        summary.bytes += file.size;
        countFindings(file, counts);
        if (file.verdict != Verdict::kPlays) worst.push_back(&file);
    }
    for (const auto& [code, count] : counts) summary.findings.push_back(count);
    std::stable_sort(summary.findings.begin(), summary.findings.end(),
                     [](const FindingCount& a, const FindingCount& b) {
                         return std::tie(a.weight, a.files) > std::tie(b.weight, b.files);
                     });
    std::stable_sort(worst.begin(), worst.end(),
                     [](const JudgedFile* a, const JudgedFile* b) { return a->verdict > b->verdict; });
    const size_t listed = std::min(worst.size(), mostListed);
    for (size_t i = 0; i < listed; ++i) summary.worst.push_back(*worst[i]);
    summary.unlisted = worst.size() - listed;
    return summary;
}

}  // namespace mkvx
