#include "elements/Model.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <algorithm>

#include "base/Terminal.h"
#include "base/Text.h"
#include "device/ElementTable.h"
#include "elements/ElementText.h"
#include "elements/Explain.h"
#include "elements/Guide.h"

namespace mkvx {
namespace {

using Align = TextTable::Align;

// ---- the tree

std::string leftOutText(const LeftOut& sum) {
    std::string text;
    for (const auto& [name, count] : sum.counts)
        text += fmt::format("{}{:L} more {}", text.empty() ? "... " : ", ", count, name);
    return text;
}

class TextTree : public Listing<TreeItem> {
  public:
    TextTree(std::optional<uint64_t> length, std::FILE* out)
        : Listing(out), mWidth(std::max<size_t>(6, length ? std::to_string(*length).size() : 10)) {
        fmt::print(mOut, "{:>{}}  HEADER  {:>{}}  ELEMENT\n", "OFFSET", mWidth, "SIZE", mWidth);
    }

    void write(const TreeItem& item) override {
        mDepth = item.depth;
        std::visit([this](const auto& what) { print(what); }, item.what);
        if (item.isAsked) fmt::print(mOut, "  <--");
        fmt::print(mOut, "\n");
    }

  private:
    void print(const Element& element) {
        const std::string size = element.hasUnknownSize ? "unknown" : std::to_string(element.size);
        row(element.offset, std::to_string(element.dataOffset - element.offset), size);
        fmt::print(mOut, "{}", elementName(element.id));
        const std::string value = valueText(element);
        if (!value.empty()) fmt::print(mOut, ": {}", value);
        for (const std::string& note : element.notes) fmt::print(mOut, "  ! {}", note);
    }
    void print(const Gap& gap) {
        row(gap.offset, "", std::to_string(gap.end - gap.offset));
        fmt::print(mOut, "! no element can be read here{}",
                   gap.isResynchronised ? ": skipped" : ", and the reader looks no further");
    }
    void print(const LeftOut& sum) {
        row(sum.offset, "", std::to_string(sum.end - sum.offset));
        fmt::print(mOut, "{}", leftOutText(sum));
    }
    void row(uint64_t offset, const std::string& header, const std::string& size) {
        fmt::print(mOut, "{:>{}}  {:>6}  {:>{}}  {:{}}", offset, mWidth, header, size, mWidth, "",
                   2 * mDepth);
    }

    size_t mWidth;
    unsigned mDepth = 0;
};

// ---- explanations

std::string wayText(const std::vector<TreeItem>& way) {
    std::vector<std::string> names;
    for (const TreeItem& item : way)
        if (const auto* element = std::get_if<Element>(&item.what)) names.push_back(elementName(element->id));
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
    if (!value.empty()) printFitted(out, 0, "Value: " + value);
    for (const std::string& note : element.notes) printFitted(out, 0, "Damaged: " + note);
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
    printFitted(out, 0, fmt::format("Bytes: {}{}", hexBytes(place.bytes), isAll ? "" : " ..."));
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
    printFitted(out, 0, guide.meaning);
    printFitted(out, 0,
                fmt::format("In the plug-in: {}.{}{}", toString(guide.use), *guide.plugin == '\0' ? "" : " ",
                            guide.plugin));
}

void printOccurrences(const Explanation& explanation, std::FILE* out) {
    const Occurrences& found = *explanation.occurrences;
    fmt::print(out, "In {}: {}\n", printable(*explanation.file),
               found.count == 0 ? "none" : fmt::format("{}", found.count));
    for (const Element& element : found.first) {
        const std::string value = valueText(element);
        printFitted(out, 2,
                    fmt::format("at {}, {}{}{}", element.offset, sizeText(element), value.empty() ? "" : ": ",
                                value));
        for (const std::string& note : element.notes) printFitted(out, 4, "! " + note);
    }
    if (found.count > found.first.size())
        fmt::print(out, "  ... {} more\n", found.count - found.first.size());
}

// ---- chapters and attachments

std::string titlesText(const Chapter& chapter) {
    std::string text;
    for (const ChapterTitle& title : chapter.titles) {
        std::string language = printable(title.language);
        if (!title.country.empty()) language += "-" + printable(title.country);
        text += fmt::format("{}{}{}", text.empty() ? "" : " / ", printable(title.text),
                            language.empty() ? "" : " (" + language + ")");
    }
    return text;
}

std::string flagsText(const Chapter& chapter) {
    std::string text = chapter.isHidden ? "hidden" : "";
    if (!chapter.isEnabled) text += text.empty() ? "disabled" : ", disabled";
    return text;
}

void addRows(TextTable& table, size_t edition, const std::vector<Chapter>& chapters, size_t depth) {
    for (const Chapter& chapter : chapters) {
        table.addRow({std::to_string(edition), clockTime(chapter.startUs),
                      chapter.endUs ? clockTime(*chapter.endUs) : "", flagsText(chapter),
                      std::string(2 * depth, ' ') + titlesText(chapter)});
        addRows(table, edition, chapter.nested, depth + 1);
    }
}

std::string chaptersTable(const ChaptersReport& report) {
    const auto& editions = report.chapters.editions;
    TextTable table({{"EDITION", Align::kRight},
                     {"START", Align::kRight},
                     {"END", Align::kRight},
                     {"FLAGS"},
                     {"CHAPTER"}});
    for (size_t i = 0; i < editions.size(); ++i) addRows(table, i, editions[i], 0);
    return table.str();
}

std::string attachmentsTable(const AttachmentsReport& report) {
    TextTable table(
        {{"NAME"}, {"TYPE"}, {"SIZE", Align::kRight}, {"OFFSET", Align::kRight}, {"DESCRIPTION"}});
    for (const Attachment& file : report.attachments.files)
        table.addRow({printable(file.name), printable(file.mime), std::to_string(file.size),
                      std::to_string(file.offset), printable(file.description)});
    return table.str();
}

void printSaved(const AttachmentsReport& report, std::FILE* out) {
    for (size_t i = 0; i < report.saved.size(); ++i) {
        const std::string& savedAs = report.saved[i].savedAs;
        const Attachment& file = report.attachments.files[i];
        if (savedAs.empty()) continue;
        const std::string name = savedAs == file.name ? "" : ", in the file \"" + printable(file.name) + "\"";
        fmt::print(out, "{}: {} bytes{}\n", printable(savedAs), file.size, name);
    }
}

}  // namespace

std::unique_ptr<Listing<TreeItem>> newTextTree(std::optional<uint64_t> length, std::FILE* out) {
    return std::make_unique<TextTree>(length, out);
}

void printText(const Explanation& explanation, std::FILE* out) {
    if (explanation.place) printPlace(explanation, out);
    printMeaning(explanation, out);
    if (explanation.occurrences) printOccurrences(explanation, out);
}

void printText(const ElementList&, std::FILE* out) {
    TextTable text({{"ID"}, {"TYPE"}, {"USE"}, {"ELEMENT"}});
    for (const ElementInfo& info : ElementRows()) {
        const std::string indent(2 * (pathOf(info).size() - 1), ' ');
        text.addRow({idText(info.id), typeName(&info), toString(guideTo(info).use), indent + info.name});
    }
    fmt::print(out, "{}", text.str());
}

void printText(const ChaptersReport& report, std::FILE* out) {
    fmt::print(out, "{}", chaptersTable(report));
}

void printText(const AttachmentsReport& report, std::FILE* out) {
    fmt::print(out, "{}", attachmentsTable(report));
    printSaved(report, out);
}

}  // namespace mkvx
