#include "elements/RenderDocument.h"

#include <fmt/format.h>

#include "base/Json.h"
#include "base/Text.h"

namespace mkvx {
namespace {

using Align = TextTable::Align;

// What chapters and attachments begin with.
Json newDocumentResult(const std::string& file, bool isReached) {
    Json object = newResult();
    object["file"] = file;
    object["reached"] = isReached;
    return object;
}

// ---- chapters

std::string titlesText(const ChapterInfo& chapter) {
    std::string text;
    for (const ChapterTitle& title : chapter.titles) {
        std::string language = printable(title.language);
        if (!title.country.empty()) language += "-" + printable(title.country);
        text += fmt::format("{}{}{}", text.empty() ? "" : " / ", printable(title.text),
                            language.empty() ? "" : " (" + language + ")");
    }
    return text;
}

std::string flagsText(const ChapterInfo& chapter) {
    std::string text = chapter.isHidden ? "hidden" : "";
    if (!chapter.isEnabled) text += text.empty() ? "disabled" : ", disabled";
    return text;
}

void addRows(TextTable& table, size_t edition, const std::vector<ChapterInfo>& chapters, size_t depth) {
    for (const ChapterInfo& chapter : chapters) {
        table.addRow({std::to_string(edition), clockTime(chapter.startUs),
                      chapter.endUs ? clockTime(*chapter.endUs) : "", flagsText(chapter),
                      std::string(2 * depth, ' ') + titlesText(chapter)});
        addRows(table, edition, chapter.nested, depth + 1);
    }
}

std::string chaptersTable(const ChaptersReport& report) {
    TextTable table({{"EDITION", Align::kRight},
                     {"START", Align::kRight},
                     {"END", Align::kRight},
                     {"FLAGS"},
                     {"CHAPTER"}});
    for (size_t i = 0; i < report.editions.size(); ++i) addRows(table, i, report.editions[i], 0);
    return table.str();
}

Json chaptersJson(const std::vector<ChapterInfo>& chapters) {
    Json list = Json::array();
    for (const ChapterInfo& chapter : chapters) {
        Json object;
        object["start_us"] = chapter.startUs;
        if (chapter.endUs) object["end_us"] = *chapter.endUs;
        object["hidden"] = chapter.isHidden;
        object["enabled"] = chapter.isEnabled;
        object["titles"] = Json::array();
        for (const ChapterTitle& title : chapter.titles) {
            Json text = {{"text", title.text}};
            if (!title.language.empty()) text["language"] = title.language;
            if (!title.country.empty()) text["country"] = title.country;
            object["titles"].push_back(text);
        }
        if (!chapter.nested.empty()) object["chapters"] = chaptersJson(chapter.nested);
        list.push_back(object);
    }
    return list;
}

// ---- attachments

std::string attachmentsTable(const AttachmentsReport& report) {
    TextTable table(
        {{"NAME"}, {"TYPE"}, {"SIZE", Align::kRight}, {"OFFSET", Align::kRight}, {"DESCRIPTION"}});
    for (const AttachmentInfo& file : report.attachments)
        table.addRow({printable(file.name), printable(file.mime), std::to_string(file.size),
                      std::to_string(file.offset), printable(file.description)});
    return table.str();
}

void printSaved(const AttachmentsReport& report, std::FILE* out) {
    for (const AttachmentInfo& file : report.attachments) {
        if (file.savedAs.empty()) continue;
        const std::string name =
            file.savedAs == file.name ? "" : ", in the file \"" + printable(file.name) + "\"";
        fmt::print(out, "{}: {} bytes{}\n", printable(file.savedAs), file.size, name);
    }
}

Json attachmentJson(const AttachmentInfo& file) {
    Json object;
    object["name"] = file.name;
    object["mime"] = file.mime;
    if (!file.description.empty()) object["description"] = file.description;
    object["uid"] = file.uid;
    object["offset"] = file.offset;
    object["size"] = file.size;
    if (!file.savedAs.empty()) object["saved_as"] = file.savedAs;
    if (!file.problem.empty()) object["problem"] = file.problem;
    return object;
}

}  // namespace

void renderChapters(const ChaptersReport& report, Format format, std::FILE* out) {
    if (format != Format::kJson) {
        fmt::print(out, "{}", chaptersTable(report));
        return;
    }
    Json object = newDocumentResult(report.file, report.isReached);
    object["editions"] = Json::array();
    for (const auto& edition : report.editions)
        object["editions"].push_back({{"chapters", chaptersJson(edition)}});
    fmt::print(out, "{}\n", dump(object));
}

void renderAttachments(const AttachmentsReport& report, Format format, std::FILE* out) {
    if (format != Format::kJson) {
        fmt::print(out, "{}", attachmentsTable(report));
        printSaved(report, out);
        return;
    }
    Json object = newDocumentResult(report.file, report.isReached);
    object["attachments"] = Json::array();
    for (const AttachmentInfo& file : report.attachments)
        object["attachments"].push_back(attachmentJson(file));
    fmt::print(out, "{}\n", dump(object));
}

}  // namespace mkvx
