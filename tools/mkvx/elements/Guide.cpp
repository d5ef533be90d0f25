#include "elements/Guide.h"

#include <strings.h>
#include <algorithm>
#include <cctype>

#include "base/Similar.h"
#include "device/ElementTable.h"

namespace mkvx {
namespace {

// Names that elements had before, or have in other texts.
constexpr struct {
    const char *other, *name;
} kOtherNames[] = {
    {"TimecodeScale", "TimestampScale"},
    {"Timecode", "Timestamp"},
    {"ClusterTimecode", "Timestamp"},
    {"SegmentUID", "SegmentUUID"},
    {"PrevUID", "PrevUUID"},
    {"NextUID", "NextUUID"},
    {"ChapterSegmentUID", "ChapterSegmentUUID"},
    {"ReferenceTimeCode", "ReferenceTimestamp"},
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

// In the table's own spelling.
constexpr bool hasElement(std::string_view name) {
    for (size_t i = 0; i < ElementRows::kCount; ++i)
        if (ElementRows::at(i).name == name) return true;
    return false;
}

constexpr bool leadsAstray() {
    for (const auto& row : kOtherNames)
        if (!hasElement(row.name) || hasElement(row.other)) return true;
    return false;
}
static_assert(!leadsAstray(),
              "each row of kOtherNames leads from a name that the table has not to one that it has");

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
