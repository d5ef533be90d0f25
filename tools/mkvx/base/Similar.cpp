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

// How many letters have to be put in, taken out or changed.
size_t editDistance(const std::string& a, const std::string& b) {
    std::vector<size_t> row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j) row[j] = j;
    for (size_t i = 0; i < a.size(); ++i) {
        size_t diagonal = row[0]++;
        for (size_t j = 0; j < b.size(); ++j) {
            const size_t changed = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
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
