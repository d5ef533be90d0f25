#include "report/Html.h"

#include <fmt/format.h>
#include <algorithm>
#include <cctype>

#include "base/Text.h"
#include "report/Page.h"

namespace mkvx::html {
namespace {

constexpr size_t kMostCellsInRow = 4;  // beyond, a narrow page shows cards
constexpr size_t kShortText = 20;      // that stays on one line where there is room

std::string withGroups(const std::string& digits) {
    std::string out;
    for (size_t i = 0; i < digits.size(); ++i) {
        if (i > 0 && (digits.size() - i) % 3 == 0) out += ',';
        out += digits[i];
    }
    return out;
}

bool isDigit(char c) {
    return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

std::string cell(const char* tag, const std::string& title, bool isFirst, const std::string& inner) {
    const bool isNumber = title[0] == '#';
    const char* kind = isNumber ? "number" : inner.size() <= kShortText ? "short" : "";
    return fmt::format("<{0}{1} data-label=\"{2}\" role=\"{3}\" class=\"{4}\">{5}</{0}>", tag,
                       isFirst ? " scope=\"row\"" : "", escaped(title.substr(isNumber ? 1 : 0)),
                       isFirst ? "rowheader" : "cell", kind, inner);
}

std::string heading(const std::string& title) {
    const bool isNumber = title[0] == '#';
    return fmt::format("<th scope=\"col\" role=\"columnheader\"{}>{}</th>",
                       isNumber ? " class=\"number\"" : "", escaped(title.substr(isNumber ? 1 : 0)));
}

}  // namespace

std::string escaped(std::string_view words) {
    std::string out;
    for (const char c : words) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            default:
                out += c;
        }
    }
    return out;
}

std::string text(const std::string& ofFile) {
    return escaped(shortText(ofFile));
}

std::string sentence(const std::string& words) {
    constexpr size_t kFewestDigits = 5;
    std::string out;
    for (size_t at = 0; at < words.size();) {
        size_t end = at;
        while (end < words.size() && isDigit(words[end])) ++end;
        const bool isAlone =
            (at == 0 || words[at - 1] == ' ') &&
            (end == words.size() || std::string(" ,;:)").find(words[end]) != std::string::npos);
        if (end - at >= kFewestDigits && isAlone)
            out += withGroups(words.substr(at, end - at));
        else
            out += words.substr(at, std::max<size_t>(end - at, 1));
        at = std::max(end, at + 1);
    }
    return escaped(out);
}

std::string grouped(uint64_t number) {
    return withGroups(std::to_string(number));
}

std::string exactBytes(uint64_t bytes) {
    return fmt::format("{} byte{}", grouped(bytes), bytes == 1 ? "" : "s");
}

std::string bytes(uint64_t bytes) {
    static const char* const kUnits[] = {"bytes", "kB", "MB", "GB", "TB"};
    double amount = double(bytes);
    size_t unit = 0;
    for (; amount >= 1000 && unit + 1 < std::size(kUnits); ++unit) amount /= 1000;
    if (unit == 0) return exactBytes(bytes);
    return fmt::format("{:.{}f} {} ({})", amount, amount < 100 ? 1 : 0, kUnits[unit], exactBytes(bytes));
}

std::string paragraph(const std::string& inner, const char* kind) {
    return fmt::format("<p class=\"{}\">{}</p>\n", kind, inner);
}

std::string span(const char* kind, const std::string& inner) {
    return fmt::format("<span class=\"{}\">{}</span>", kind, inner);
}

std::string section(const char* id, const char* title, const std::string& inner) {
    if (inner.empty()) return {};
    return fmt::format(
        "<section id=\"{0}\" aria-labelledby=\"{0}-title\">\n<h2 id=\"{0}-title\">{1}</h2>\n{2}</section>\n",
        id, title, inner);
}

std::string table(const std::string& caption, const std::vector<std::string>& titles,
                  const std::vector<std::vector<std::string>>& rows) {
    std::vector<size_t> used;
    for (size_t i = 0; i < titles.size(); ++i)
        if (std::any_of(rows.begin(), rows.end(), [&](const auto& row) { return !row[i].empty(); }))
            used.push_back(i);
    std::string head, body;
    for (const size_t i : used) head += heading(titles[i]);
    for (const std::vector<std::string>& row : rows) {
        body += "<tr role=\"row\">";
        for (const size_t i : used) {
            const bool isFirst = i == used.front();
            body += cell(isFirst ? "th" : "td", titles[i], isFirst, row[i]);
        }
        body += "</tr>\n";
    }
    // The roles are those that the elements have anyway; laid out as cards they would lose them.
    return fmt::format(
        "<div class=\"table{}\"><table role=\"table\">{}<thead role=\"rowgroup\"><tr "
        "role=\"row\">{}</tr></thead>\n"
        "<tbody role=\"rowgroup\">\n{}</tbody></table></div>\n",
        used.size() > kMostCellsInRow ? " cards" : "",
        caption.empty() ? std::string() : "<caption>" + escaped(caption) + "</caption>", head, body);
}

}  // namespace mkvx::html
