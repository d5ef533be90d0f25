#include <fmt/format.h>

#include "base/Json.h"
#include "device/ElementTable.h"
#include "elements/ElementText.h"
#include "elements/Explain.h"
#include "elements/Guide.h"
#include "elements/Model.h"

namespace mkvx {
namespace {

// ---- elements

Json blockJson(uint32_t id, const BlockValue& block) {
    static const char* const kLacings[] = {"none", "xiph", "fixed", "ebml"};
    Json object;
    object["track"] = block.track;
    object["timecode"] = block.timecode;
    if (block.timeUs) object["time_us"] = *block.timeUs;
    object["flags"] = block.flags;
    if (id == id::kSimpleBlock) object["key"] = (block.flags & 0x80) != 0;
    object["lacing"] = kLacings[block.flags >> 1 & 3];
    object["frames"] = block.frames;
    return object;
}

// Puts what kind of value there is into the object.
struct ValueToJson {
    const Element& element;
    Json& object;

    void operator()(std::monostate) const {}
    void operator()(uint64_t value) const { object["value"] = value; }
    void operator()(int64_t value) const { object["value"] = value; }
    void operator()(double value) const { object["value"] = value; }
    void operator()(const TextValue& value) const {
        object["value"] = value.head;
        if (value.isCut) object["cut"] = true;
    }
    void operator()(const BinaryValue& value) const {
        std::string hex;
        for (const uint8_t byte : value.head) hex += fmt::format("{:02x}", byte);
        object["value"] = hex;
        if (value.size > value.head.size()) object["cut"] = true;
    }
    void operator()(const IdValue& value) const { object["value"] = idText(value.id); }
    void operator()(const DateValue& value) const { object["value"] = dateText(value); }
    void operator()(const BlockValue& value) const { object["block"] = blockJson(element.id, value); }
};

// The members offset, header, size, end, id, name, type, value, meaning, block and notes, where they apply.
Json elementJson(const Element& element) {
    Json object;
    object["offset"] = element.offset;
    object["header"] = element.dataOffset - element.offset;
    object["size"] = element.hasUnknownSize ? Json(nullptr) : Json(element.size);
    object["end"] = element.end;
    object["id"] = idText(element.id);
    if (element.info != nullptr) object["name"] = element.info->name;
    object["type"] = typeName(element.info);
    std::visit(ValueToJson{element, object}, element.value);
    if (!element.meaning.empty()) object["meaning"] = element.meaning;
    if (!element.notes.empty()) object["notes"] = element.notes;
    return object;
}

// ---- the tree

Json contentJson(const Element& element) {
    return elementJson(element);
}

Json contentJson(const Gap& gap) {
    return {{"offset", gap.offset}, {"end", gap.end}, {"gap", gap.isResynchronised ? "skipped" : "rest"}};
}

Json contentJson(const LeftOut& sum) {
    Json counts = Json::object();
    for (const auto& [name, count] : sum.counts) counts[name] = count;
    return {{"offset", sum.offset}, {"end", sum.end}, {"left_out", counts}};
}

Json itemJson(const TreeItem& item) {
    Json object;
    object["depth"] = item.depth;
    object.update(std::visit([](const auto& what) { return contentJson(what); }, item.what));
    if (item.isAsked) object["asked"] = true;
    return object;
}

// ---- explanations

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

void setMeaning(const ElementInfo& info, Json& object) {
    const ElementGuide& guide = guideTo(info);
    object["id"] = idText(info.id);
    object["name"] = info.name;
    object["type"] = typeName(&info);
    object["section"] = info.section;
    object["path"] = pathOf(info);
    object["meaning"] = guide.meaning;
    object["use"] = toString(guide.use);
    if (*guide.plugin != '\0') object["plugin"] = guide.plugin;
}

Json toJson(const Explanation& explanation) {
    Json object = newResult();
    if (explanation.file) object["file"] = *explanation.file;
    if (explanation.offset) object["offset"] = *explanation.offset;
    if (explanation.info != nullptr)
        setMeaning(*explanation.info, object);
    else if (explanation.id != 0)
        object["id"] = idText(explanation.id);
    if (explanation.place) setPlace(*explanation.place, object);
    if (!explanation.occurrences) return object;
    object["count"] = explanation.occurrences->count;
    object["first"] = Json::array();
    for (const Element& element : explanation.occurrences->first)
        object["first"].push_back(elementJson(element));
    return object;
}

// ---- chapters and attachments

// What chapters and attachments begin with.
Json newDocumentResult(const std::string& file, bool isReached) {
    Json object = newResult();
    object["file"] = file;
    object["reached"] = isReached;
    return object;
}

Json chaptersJson(const std::vector<Chapter>& chapters) {
    Json list = Json::array();
    for (const Chapter& chapter : chapters) {
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

Json attachmentJson(const Attachment& file, const SavedAttachment& saved) {
    Json object;
    object["name"] = file.name;
    object["mime"] = file.mime;
    if (!file.description.empty()) object["description"] = file.description;
    object["uid"] = file.uid;
    object["offset"] = file.offset;
    object["size"] = file.size;
    if (!saved.savedAs.empty()) object["saved_as"] = saved.savedAs;
    if (!saved.problem.empty()) object["problem"] = saved.problem;
    return object;
}

}  // namespace

std::string openTreeJson(const std::string& file, std::optional<uint64_t> length) {
    Json head = newResult();
    head["file"] = file;
    if (length) head["size"] = *length;
    return openResult(head, "items");
}

void printJson(const TreeItem& item, std::FILE* out) {
    fmt::print(out, "{}", dump(itemJson(item)));
}

void printJson(const Explanation& explanation, std::FILE* out) {
    fmt::print(out, "{}", dump(toJson(explanation)));
}

void printJson(const ElementList&, std::FILE* out) {
    Json object = newResult();
    object["elements"] = Json::array();
    for (const ElementInfo& info : ElementRows()) {
        Json row;
        setMeaning(info, row);
        object["elements"].push_back(std::move(row));
    }
    fmt::print(out, "{}", dump(object));
}

void printJson(const ChaptersReport& report, std::FILE* out) {
    Json object = newDocumentResult(report.file, report.chapters.isReached);
    object["editions"] = Json::array();
    for (const auto& edition : report.chapters.editions)
        object["editions"].push_back({{"chapters", chaptersJson(edition)}});
    fmt::print(out, "{}", dump(object));
}

void printJson(const AttachmentsReport& report, std::FILE* out) {
    Json object = newDocumentResult(report.file, report.attachments.isReached);
    object["attachments"] = Json::array();
    for (size_t i = 0; i < report.attachments.files.size(); ++i)
        object["attachments"].push_back(attachmentJson(
            report.attachments.files[i], i < report.saved.size() ? report.saved[i] : SavedAttachment()));
    fmt::print(out, "{}", dump(object));
}

}  // namespace mkvx
