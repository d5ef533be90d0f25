#include "elements/Explain.h"

#include <fmt/format.h>
#include <algorithm>
#include <charconv>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "base/Log.h"
#include "base/Text.h"
#include "device/ElementTable.h"
#include "device/ElementWalk.h"
#include "elements/Guide.h"
#include "elements/Meaning.h"
#include "elements/Tree.h"
#include "source/MatroskaSource.h"

namespace mkvx {
namespace {

template <typename Number>
std::optional<Number> parseNumber(std::string_view text, int base) {
    Number value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    const bool isWhole = error == std::errc() && end == text.data() + text.size() && !text.empty();
    return isWhole ? std::optional<Number>(value) : std::nullopt;
}

// "0x1A45DFA3" or "1A45DFA3": the ID as it stands in a file.
std::optional<uint32_t> parseId(std::string_view text) {
    const bool isMarked = text.substr(0, 2) == "0x" || text.substr(0, 2) == "0X";
    if (isMarked) text.remove_prefix(2);
    const std::optional<uint32_t> id = parseNumber<uint32_t>(text, 16);
    return id && (isMarked || findElement(*id) != nullptr) ? id : std::nullopt;
}

Place placeOf(const android::sp<android::DataSource>& source, const std::string& file, uint64_t offset) {
    Place place;
    place.way = wayTo(source, file, offset);
    uint64_t from = 0, to = 0;
    if (const auto* element = std::get_if<Element>(&place.way.back().what)) {
        from = element->offset;
        to = std::max(element->end, element->dataOffset);
    } else if (const auto* gap = std::get_if<Gap>(&place.way.back().what)) {
        from = gap->offset;
        to = gap->end;
    }
    place.bytes.resize(size_t(std::min<uint64_t>(to - from, Place::kShownBytes)));
    const ssize_t got = source->readAt(off64_t(from), place.bytes.data(), place.bytes.size());
    place.bytes.resize(got > 0 ? size_t(got) : 0);
    return place;
}

Occurrences occurrencesOf(const android::sp<android::DataSource>& source, uint32_t id) {
    Occurrences found;
    ElementWalk walk(source);
    while (std::optional<WalkItem> item = walk.next()) {  // bounded by the walk
        if (wasInterrupted()) break;
        auto* element = std::get_if<Element>(&item->what);
        if (element == nullptr || element->id != id || found.count++ >= Occurrences::kShown) continue;
        readMeaningfully(walk, *element);
        found.first.push_back(std::move(*element));
    }
    return found;
}

[[noreturn]] void refuse(const std::string& subject) {
    std::string sentence = fmt::format("{} is neither an element's name nor an ID", printable(subject));
    const std::vector<std::string> names = similarNames(subject);
    for (const std::string& name : names) sentence += (&name == &names.front() ? "; perhaps " : ", ") + name;
    throw UsageFailure(sentence);
}

void explainPlace(const SourceOptions& options, Explanation& result) {
    result.place = placeOf(openMatroska(*result.file, options), *result.file, *result.offset);
    if (const auto* element = std::get_if<Element>(&result.place->way.back().what)) {
        result.id = element->id;
        result.info = element->info;
    }
}

void explainElement(const std::string& subject, const SourceOptions& options, Explanation& result) {
    result.info = findByName(subject);
    const std::optional<uint32_t> id =
        result.info != nullptr ? std::optional<uint32_t>(result.info->id) : parseId(subject);
    if (!id) refuse(subject);
    result.id = *id;
    result.info = findElement(*id);
    if (result.file) result.occurrences = occurrencesOf(openMatroska(*result.file, options), *id);
}

}  // namespace

std::vector<std::string> pathOf(const ElementInfo& info) {
    std::vector<std::string> names;
    for (const auto* row = &info; row != nullptr;) {  // bounded: parents of the table do not form a ring
        names.insert(names.begin(), row->name);
        row = row->parent == 0 ? nullptr : findElement(row->parent);
    }
    return names;
}

Explanation explain(const std::string& subject, const std::string& file, const SourceOptions& options) {
    const MuteLog mute;
    Explanation result;
    if (!file.empty()) {
        result.file = file;
        result.offset = parseNumber<uint64_t>(subject, 10);
    }
    if (result.offset)
        explainPlace(options, result);
    else
        explainElement(subject, options, result);
    return result;
}

}  // namespace mkvx
