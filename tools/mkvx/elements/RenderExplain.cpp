#include "elements/RenderExplain.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "base/Json.h"
#include "base/Text.h"
#include "elements/RenderElement.h"

namespace mkvx {
namespace {

// ---- text

std::string wayText(const std::vector<TreeItem>& way) {
    std::vector<std::string> names;
    for (const TreeItem& item : way)
        if (const auto* element = std::get_if<Element>(&item.what)) names.push_back(nameOf(*element));
    return fmt::format("{}", fmt::join(names, " > "));
}

void printPlaceInElement(const Explanation& explanation, const Element& element, std::FILE* out) {
    const uint64_t offset = *explanation.offset;
    const bool isHeader = offset < element.dataOffset;
    fmt::print(out, "Byte {} is byte {} of the {} of {}\n", offset,
               isHeader ? offset - element.offset : offset - element.dataOffset, isHeader ? "header" : "data",
               wayText(explanation.place->way));
    fmt::print(out, "Stands at {}, header {} bytes, data {}, ends at {}\n", element.offset,
               element.dataOffset - element.offset, sizeText(element), element.end);
    const std::string value = valueText(element);
    if (!value.empty()) fmt::print(out, "Value: {}\n", value);
    for (const std::string& note : element.notes) fmt::print(out, "Damaged: {}\n", note);
}

void printPlace(const Explanation& explanation, std::FILE* out) {
    const Place& place = *explanation.place;
    if (const auto* element = std::get_if<Element>(&place.way.back().what)) {
        printPlaceInElement(explanation, *element, out);
    } else if (const auto* gap = std::get_if<Gap>(&place.way.back().what)) {
        const std::string way = wayText(place.way);
        fmt::print(out, "Byte {} is in no element: from {} to {}{} none can be read; the reader {}\n",
                   *explanation.offset, gap->offset, gap->end, way.empty() ? "" : " of " + way,
                   gap->isResynchronised ? "goes on behind that" : "looks no further there");
    }
    const bool isAll = place.bytes.size() < 64;
    fmt::print(out, "Bytes: {}{}\n", hexBytes(place.bytes), isAll ? "" : " ...");
}

void printMeaning(const Explanation& explanation, std::FILE* out) {
    if (explanation.info == nullptr) {
        if (explanation.id != 0)
            fmt::print(out, "{} is the ID of no element that is known here; the plug-in passes it over\n",
                       idText(explanation.id));
        return;
    }
    const auto& info = *explanation.info;
    const ElementGuide& guide = guideTo(info);
    fmt::print(out, "{} ({}), {}, {}\n", info.name, idText(info.id), typeName(&info), info.section);
    const std::vector<std::string> path = pathOf(info);
    if (path.size() > 1) fmt::print(out, "Place: {}\n", fmt::join(path, " > "));
    fmt::print(out, "{}\n", guide.meaning);
    fmt::print(out, "In the plug-in: {}.{}{}\n", toString(guide.use), *guide.plugin == '\0' ? "" : " ",
               guide.plugin);
}

void printOccurrences(const Explanation& explanation, std::FILE* out) {
    const Occurrences& found = *explanation.occurrences;
    fmt::print(out, "In {}: {}\n", printable(*explanation.file),
               found.count == 0 ? "none" : fmt::format("{}", found.count));
    for (const Element& element : found.first) {
        const std::string value = valueText(element);
        fmt::print(out, "  at {}, {}{}{}\n", element.offset, sizeText(element), value.empty() ? "" : ": ",
                   value);
        for (const std::string& note : element.notes) fmt::print(out, "    ! {}\n", note);
    }
    if (found.count > found.first.size())
        fmt::print(out, "  ... {} more\n", found.count - found.first.size());
}

void printText(const Explanation& explanation, std::FILE* out) {
    if (explanation.place) printPlace(explanation, out);
    printMeaning(explanation, out);
    if (explanation.occurrences) printOccurrences(explanation, out);
}

// ---- JSON

void setPlace(const Place& place, Json& object) {
    Json way = Json::array();
    for (const TreeItem& item : place.way) {
        if (const auto* element = std::get_if<Element>(&item.what)) way.push_back(elementJson(*element));
        if (const auto* gap = std::get_if<Gap>(&item.what))
            object["gap"] = {{"offset", gap->offset}, {"end", gap->end}};
    }
    object["way"] = way;
    object["bytes"] = hexBytes(place.bytes);
}

void setMeaning(const Explanation& explanation, Json& object) {
    if (explanation.id != 0) object["id"] = idText(explanation.id);
    if (explanation.info == nullptr) return;
    const ElementGuide& guide = guideTo(*explanation.info);
    object["name"] = explanation.info->name;
    object["type"] = typeName(explanation.info);
    object["section"] = explanation.info->section;
    object["path"] = pathOf(*explanation.info);
    object["meaning"] = guide.meaning;
    object["use"] = toString(guide.use);
    if (*guide.plugin != '\0') object["plugin"] = guide.plugin;
}

Json toJson(const Explanation& explanation) {
    Json object = newResult();
    if (explanation.file) object["file"] = *explanation.file;
    if (explanation.offset) object["offset"] = *explanation.offset;
    setMeaning(explanation, object);
    if (explanation.place) setPlace(*explanation.place, object);
    if (!explanation.occurrences) return object;
    object["count"] = explanation.occurrences->count;
    object["first"] = Json::array();
    for (const Element& element : explanation.occurrences->first)
        object["first"].push_back(elementJson(element));
    return object;
}

}  // namespace

void renderElementTable(Format format, std::FILE* out) {
    size_t count = 0;
    const MatroskaExtReader::ElementInfo* table = MatroskaExtReader::ElementTable(&count);
    Json elements = Json::array();
    TextTable text({{"ID"}, {"TYPE"}, {"USE"}, {"ELEMENT"}});
    for (size_t i = 0; i < count; ++i) {
        Explanation explanation;
        explanation.id = table[i].id;
        explanation.info = &table[i];
        Json object;
        setMeaning(explanation, object);
        elements.push_back(object);
        const std::string indent(2 * (pathOf(table[i]).size() - 1), ' ');
        text.addRow({idText(table[i].id), typeName(&table[i]), toString(guideTo(table[i]).use),
                     indent + table[i].name});
    }
    Json object = newResult();
    object["elements"] = std::move(elements);
    fmt::print(out, "{}", format == Format::kJson ? dump(object) + "\n" : text.str());
}

void renderExplanation(const Explanation& explanation, Format format, std::FILE* out) {
    if (format == Format::kJson)
        fmt::print(out, "{}\n", dump(toJson(explanation)));
    else
        printText(explanation, out);
}

}  // namespace mkvx
