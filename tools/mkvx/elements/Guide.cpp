#include "elements/Guide.h"

#include <strings.h>
#include <algorithm>
#include <cctype>

#include "base/Similar.h"
#include "elements/GuideTable.h"

namespace mkvx {
namespace {

using MatroskaExtReader::ElementInfo;

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
    size_t count = 0;
    const ElementInfo* table = MatroskaExtReader::ElementTable(&count);
    std::vector<std::string> names;
    for (size_t i = 0; i < count; ++i) names.emplace_back(table[i].name);
    return similarTo(name, names);
}

}  // namespace mkvx
