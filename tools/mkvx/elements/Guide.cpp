#include "elements/Guide.h"

#include <strings.h>
#include <algorithm>
#include <cctype>

#include "base/Similar.h"
#include "device/ElementTable.h"

namespace mkvx {
namespace {

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

const ElementInfo* findByName(std::string_view name) {
    for (const auto& row : kOtherNames)
        if (isSame(row.other, name)) name = row.name;
    const ElementRows rows;
    const auto found = std::find_if(rows.begin(), rows.end(),
                                    [&](const ElementInfo& row) { return isSame(row.name, name); });
    return found == rows.end() ? nullptr : found;
}

std::vector<std::string> similarNames(std::string_view name) {
    std::vector<std::string> names;
    for (const ElementInfo& row : ElementRows()) names.emplace_back(row.name);
    return similarTo(name, names);
}

}  // namespace mkvx
