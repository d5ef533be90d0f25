#include "ElementGuide.h"

#include <strings.h>
#include <algorithm>
#include <cctype>

#include "ElementGuideTable.h"

namespace mkvx {
namespace {

using MatroskaExtReader::ElementInfo;

constexpr size_t kMostSuggestions = 5;
constexpr size_t kLongestName = 64;  // of a name that is worth comparing

// Names of elements that other texts use.
constexpr struct {
    const char *other, *name;
} kOtherNames[] = {
    {"TimestampScale", "TimecodeScale"},
    {"Timecode", "Timestamp"},
    {"ClusterTimecode", "Timestamp"},
    {"SegmentUUID", "SegmentUID"},
    {"PrevUUID", "PrevUID"},
    {"NextUUID", "NextUID"},
    {"TrackTimecodeScale", "TrackTimestampScale"},
    {"FileMimeType", "FileMediaType"},
    {"ColourSpace", "UncompressedFourCC"},
    {"TagLanguageIETF", "TagLanguageBCP47"},
    {"LanguageIETF", "LanguageBCP47"},
    {"ChapLanguageIETF", "ChapLanguageBCP47"},
    {"CRC32", "CRC-32"},
};

bool isSame(std::string_view a, std::string_view b) {
    return a.size() == b.size() && ::strncasecmp(a.data(), b.data(), a.size()) == 0;
}

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

const char* toString(ElementUse use) {
    switch (use) {
        case ElementUse::kUsed:
            return "used";
        case ElementUse::kKept:
            return "kept";
        case ElementUse::kIgnored:
            return "ignored";
    }
    return "";
}

const ElementGuide& guideTo(const ElementInfo& info) {
    static constexpr ElementGuide kNone = {"", ElementUse::kIgnored, "", ""};
    size_t count = 0;
    const ElementGuide* guides = elementGuides(&count);
    const auto found = std::find_if(guides, guides + count,
                                    [&](const ElementGuide& row) { return isSame(row.name, info.name); });
    return found == guides + count ? kNone : *found;
}

const ElementInfo* findByName(std::string_view name) {
    for (const auto& row : kOtherNames)
        if (isSame(row.other, name)) name = row.name;
    size_t count = 0;
    const ElementInfo* table = MatroskaExtReader::ElementTable(&count);
    const auto found =
        std::find_if(table, table + count, [&](const ElementInfo& row) { return isSame(row.name, name); });
    return found == table + count ? nullptr : found;
}

std::vector<std::string> similarNames(std::string_view name) {
    if (name.size() > kLongestName) return {};
    const std::string asked = lower(name);
    std::vector<std::pair<size_t, std::string>> ranked;
    size_t count = 0;
    const ElementInfo* table = MatroskaExtReader::ElementTable(&count);
    for (size_t i = 0; i < count; ++i) {
        const size_t rank = unlikeness(asked, lower(table[i].name));
        if (rank != SIZE_MAX) ranked.emplace_back(rank, table[i].name);
    }
    std::stable_sort(ranked.begin(), ranked.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<std::string> names;
    for (size_t i = 0; i < std::min(ranked.size(), kMostSuggestions); ++i) names.push_back(ranked[i].second);
    return names;
}

}  // namespace mkvx
