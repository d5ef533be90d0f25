#include "base/Text.h"

#include <fmt/format.h>
#include <algorithm>

namespace mkvx {
namespace {

struct CodePoint {
    char32_t value = 0;
    size_t bytes = 0;  // 0: not valid UTF-8 here
};

bool isContinuation(unsigned char byte) {
    return (byte & 0xC0) == 0x80;
}

// Strict decoding: overlong forms, surrogates and values past U+10FFFF are refused.
CodePoint decode(std::string_view text) {
    static const char32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const auto lead = static_cast<unsigned char>(text[0]);
    if (lead < 0x80) return {lead, 1};
    const size_t length = lead >= 0xF0 && lead < 0xF8 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 0;
    if (length == 0 || lead >= 0xF8 || text.size() < length) return {};
    char32_t value = lead & (0x7F >> length);
    for (size_t i = 1; i < length; ++i) {
        if (!isContinuation(static_cast<unsigned char>(text[i]))) return {};
        value = value << 6 | (static_cast<unsigned char>(text[i]) & 0x3F);
    }
    const bool surrogate = value >= 0xD800 && value < 0xE000;
    if (value < smallest[length] || surrogate || value > 0x10FFFF) return {};
    return {value, length};
}

bool isControl(char32_t c) {
    const bool c0c1 = c < 0x20 || (c >= 0x7F && c < 0xA0);
    const bool direction =
        (c >= 0x200E && c <= 0x200F) || (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
    return c0c1 || direction || c == 0x2028 || c == 0x2029;
}

bool isWide(char32_t c) {
    return (c >= 0x1100 && c <= 0x115F) || (c >= 0x2E80 && c <= 0xA4CF) || (c >= 0xAC00 && c <= 0xD7A3) ||
           (c >= 0xF900 && c <= 0xFAFF) || (c >= 0xFE30 && c <= 0xFE6F) || (c >= 0xFF00 && c <= 0xFF60) ||
           (c >= 0xFFE0 && c <= 0xFFE6) || (c >= 0x1F300 && c <= 0x1FAFF) || (c >= 0x20000 && c <= 0x3FFFD);
}

// The sequences that colour text on a terminal.
std::string withoutColours(const std::string& text) {
    std::string out;
    for (size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '\033')
            at = std::min(text.find('m', at), text.size() - 1);
        else
            out += text[at];
    }
    return out;
}

}  // namespace

std::string clockTime(int64_t us) {
    // Negated as unsigned: the smallest value has no positive twin.
    const uint64_t size = us < 0 ? 0 - static_cast<uint64_t>(us) : static_cast<uint64_t>(us);
    const uint64_t ms = size / 1000;
    return fmt::format("{}{:02}:{:02}:{:02}.{:03}", us < 0 ? "-" : "", ms / 3600000, ms / 60000 % 60,
                       ms / 1000 % 60, ms % 1000);
}

bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        const CodePoint point = decode(text);
        if (point.bytes == 0) return false;
        text.remove_prefix(point.bytes);
    }
    return true;
}

std::string printable(std::string_view text) {
    std::string out;
    while (!text.empty()) {
        const CodePoint point = decode(text);
        if (point.bytes == 0 || isControl(point.value))
            out += "\xEF\xBF\xBD";  // U+FFFD
        else
            out.append(text.substr(0, point.bytes));
        text.remove_prefix(std::max<size_t>(point.bytes, 1));
    }
    return out;
}

size_t displayWidth(std::string_view text) {
    size_t columns = 0;
    while (!text.empty()) {
        const CodePoint point = decode(text);
        columns += isWide(point.value) ? 2 : 1;
        text.remove_prefix(std::max<size_t>(point.bytes, 1));
    }
    return columns;
}

std::string wrapped(const std::string& line, size_t width, size_t hanging) {
    constexpr size_t kFewestColumns = 20;
    if (width < hanging + kFewestColumns) return line;
    std::string out;
    size_t column = 0;
    for (size_t at = 0; at < line.size();) {  // a word with the spaces in front of it
        const size_t word = std::min(line.find_first_not_of(' ', at), line.size());
        const size_t end = std::min(line.find(' ', word), line.size());
        const std::string text = line.substr(word, end - word);
        const size_t columns = displayWidth(withoutColours(text));
        const bool isStart = out.empty() || column == hanging;
        if (!isStart && column + (word - at) + columns > width) {
            out += "\n" + std::string(hanging, ' ') + text;
            column = hanging + columns;
        } else {
            out += line.substr(at, end - at);
            column += word - at + columns;
        }
        at = end;
    }
    return out;
}

std::string counted(uint64_t count, const char* noun) {
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

TextTable TextTable::withoutEmptyColumns() const {
    TextTable table({});
    table.mRows.resize(mRows.size());
    for (size_t column = 0; column < mColumns.size(); ++column) {
        const bool isEmpty =
            std::all_of(mRows.begin(), mRows.end(), [&](const auto& row) { return row[column].empty(); });
        if (isEmpty) continue;
        table.mColumns.push_back(mColumns[column]);
        for (size_t i = 0; i < mRows.size(); ++i) table.mRows[i].push_back(mRows[i][column]);
    }
    return table;
}

std::string TextTable::str() const {
    if (mRows.empty()) return {};
    std::vector<std::string> titles;
    for (const Column& column : mColumns) titles.push_back(column.title);

    std::vector<size_t> widths(mColumns.size(), 0);
    auto widen = [&](const std::vector<std::string>& row) {
        for (size_t i = 0; i < widths.size(); ++i) widths[i] = std::max(widths[i], displayWidth(row[i]));
    };
    widen(titles);
    for (const auto& row : mRows) widen(row);

    std::string out;
    auto print = [&](const std::vector<std::string>& row) {
        std::string line;
        for (size_t i = 0; i < widths.size(); ++i) {
            const std::string gap(widths[i] - displayWidth(row[i]), ' ');
            line += mColumns[i].align == Align::kRight ? gap + row[i] : row[i] + gap;
            line += "  ";
        }
        line.erase(line.find_last_not_of(' ') + 1);
        out += line + "\n";
    };
    print(titles);
    for (const auto& row : mRows) print(row);
    return out;
}

}  // namespace mkvx
