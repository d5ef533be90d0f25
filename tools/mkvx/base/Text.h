// Text for people: tables, times and safe printing of what a file says.
#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace mkvx {

// HH:MM:SS.mmm, cut to the millisecond; more hours than 99 take more digits; negative times start with '-'.
std::string clockTime(int64_t us);

// The text with every control character and every byte that is not part of valid UTF-8 replaced, so that a
// hostile file cannot steer a terminal.
std::string printable(std::string_view text);

bool isUtf8(std::string_view text);

// Terminal columns that a printable() text takes: East Asian wide characters take two.
size_t displayWidth(std::string_view text);

// The line, without its line feed, broken at spaces into lines of at most `width` columns where that is
// possible; those behind the first begin with `hanging` spaces. Colours take no column. As it is for a width
// of 0 or one that leaves too little behind the spaces.
std::string wrapped(const std::string& line, size_t width, size_t hanging);

// "1 block", "3 blocks".
std::string counted(uint64_t count, const char* noun);

// Rows of left- or right-aligned columns, two spaces apart. An empty table prints nothing.
class TextTable {
  public:
    enum class Align { kLeft, kRight };
    struct Column {
        std::string title;
        Align align = Align::kLeft;
    };
    explicit TextTable(std::vector<Column> columns) : mColumns(std::move(columns)) {}

    // One cell per column.
    void addRow(std::vector<std::string> cells) { mRows.push_back(std::move(cells)); }
    // The same without the columns that hold nothing but their title.
    TextTable withoutEmptyColumns() const;
    std::string str() const;

  private:
    std::vector<Column> mColumns;
    std::vector<std::vector<std::string>> mRows;
};

}  // namespace mkvx
