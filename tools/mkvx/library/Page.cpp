// The summary as a page that needs neither a network nor a script.
#include <fmt/format.h>

#include "base/Text.h"
#include "library/Model.h"

namespace mkvx {
namespace {

constexpr char kStyle[] =
    "body{font:15px/1.5 system-ui,sans-serif;color-scheme:light dark;max-width:70rem;margin:2rem "
    "auto;padding:0 1rem}"
    "table{border-collapse:collapse;width:100%;margin:1rem 0}"
    "th,td{text-align:left;vertical-align:top;padding:.25rem .75rem .25rem 0;border-bottom:1px solid #8884}"
    "td{overflow-wrap:anywhere}.n{text-align:right;white-space:nowrap}"
    "meter{width:12rem}@media print{body{max-width:none;margin:0}}";

std::string escaped(const std::string& text) {
    std::string out;
    for (const char c : printable(text)) {
        if (c == '<')
            out += "&lt;";
        else if (c == '>')
            out += "&gt;";
        else if (c == '&')
            out += "&amp;";
        else if (c == '"')
            out += "&quot;";
        else
            out += c;
    }
    return out;
}

// With a thin space between thousands.
std::string grouped(uint64_t number) {
    std::string digits = std::to_string(number);
    for (size_t at = digits.size(); at > 3;) digits.insert(at -= 3, "\xE2\x80\xAF");
    return digits;
}

std::string verdictRows(const Summary& summary) {
    std::string rows;
    for (auto verdict = summary.verdicts.rbegin(); verdict != summary.verdicts.rend(); ++verdict)
        rows += fmt::format(
            "<tr><td>{}<td class=n>{}<td class=n>{:.1f} %<td><meter max={} value={}></meter>\n",
            describe(verdict->first), grouped(verdict->second),
            100.0 * double(verdict->second) / double(summary.files), summary.files, verdict->second);
    return rows;
}

std::string findingRows(const Summary& summary) {
    std::string rows;
    for (const FindingCount& count : summary.findings)
        rows += fmt::format("<tr><td><code>{}</code><td>{}<td class=n>{}<td>{}\n", escaped(count.code),
                            toString(count.weight), grouped(count.files), escaped(count.example));
    return rows;
}

std::string fileRows(const Summary& summary) {
    std::string rows;
    for (const JudgedFile& file : summary.worst)
        rows += fmt::format("<tr><td>{}<td class=n>{}<td>{}<td>{}\n", describe(file.verdict),
                            grouped(file.size), escaped(file.path), escaped(file.reason));
    return rows;
}

// Nothing for a table without rows.
std::string section(const char* title, const char* head, const std::string& rows) {
    if (rows.empty()) return {};
    return fmt::format("<h2>{}</h2>\n<table><thead><tr>{}</thead><tbody>\n{}</tbody></table>\n", title, head,
                       rows);
}

}  // namespace

std::string summaryPage(const Summary& summary) {
    std::string page = fmt::format(
        "<!DOCTYPE html>\n<html lang=en><head><meta charset=utf-8><meta name=viewport "
        "content=\"width=device-width\">\n"
        "<title>{0} files</title><style>{1}</style></head><body>\n<h1>{0} files, {2} bytes</h1>\n",
        grouped(summary.files), kStyle, grouped(summary.bytes));
    page += section("Verdicts", "<th>Verdict<th class=n>Files<th class=n>Share<th>", verdictRows(summary));
    page += section("Findings", "<th>Code<th>Weight<th class=n>Files<th>For instance", findingRows(summary));
    page += section("Files that do not play whole", "<th>Verdict<th class=n>Bytes<th>File<th>Why",
                    fileRows(summary));
    if (summary.unlisted > 0) page += fmt::format("<p>And {} more.</p>\n", grouped(summary.unlisted));
    return page + "</body></html>\n";
}

}  // namespace mkvx
