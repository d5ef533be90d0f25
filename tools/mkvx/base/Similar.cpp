#include "base/Similar.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <utility>

namespace mkvx {
namespace {

constexpr size_t kMostSuggestions = 5;
constexpr size_t kLongestName = 64;  // the comparison's work grows with the lengths' product

std::string lower(std::string_view text) {
    std::string out(text);
    for (char& c : out) c = char(std::tolower(static_cast<unsigned char>(c)));
    return out;
}

// How many letters have to be put in, taken out, changed, or swapped with their neighbour.
size_t editDistance(const std::string& a, const std::string& b) {
    // [i][j]: between the first i letters of a and the first j of b.
    std::vector<std::vector<size_t>> steps(a.size() + 1, std::vector<size_t>(b.size() + 1));
    for (size_t j = 0; j <= b.size(); ++j) steps[0][j] = j;
    for (size_t i = 1; i <= a.size(); ++i) {
        steps[i][0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            const size_t changed = steps[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            steps[i][j] = std::min({changed, steps[i - 1][j] + 1, steps[i][j - 1] + 1});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                steps[i][j] = std::min(steps[i][j], steps[i - 2][j - 2] + 1);
        }
    }
    return steps[a.size()][b.size()];
}

// Smaller is likelier; nothing for names that have little in common.
size_t unlikeness(const std::string& asked, const std::string& name) {
    const size_t far = SIZE_MAX;
    if (asked.size() >= 3 && name.find(asked) != std::string::npos) return name.size() - asked.size();
    const size_t distance = editDistance(asked, name);
    return distance * 3 <= std::max(asked.size(), name.size()) ? 10 * distance : far;
}

}  // namespace

std::vector<std::string> similarTo(std::string_view asked, const std::vector<std::string>& names) {
    if (asked.size() > kLongestName) return {};
    std::vector<std::pair<size_t, std::string>> ranked;
    for (const std::string& name : names) {
        const size_t rank = unlikeness(lower(asked), lower(name));
        if (rank != SIZE_MAX) ranked.emplace_back(rank, name);
    }
    std::stable_sort(ranked.begin(), ranked.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<std::string> found;
    for (size_t i = 0; i < std::min(ranked.size(), kMostSuggestions); ++i) found.push_back(ranked[i].second);
    return found;
}

}  // namespace mkvx
