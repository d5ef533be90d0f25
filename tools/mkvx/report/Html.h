// Markup made of values: what comes from a file reaches the page through text() only, and stays text.
#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace mkvx::html {

// The bytes of a file as text of the page: cut where they are longer than a name needs, control characters
// replaced, markup escaped.
std::string text(const std::string& ofFile);
// Our own words, in which names of the file may stand that are printable already.
std::string escaped(std::string_view words);
// The same with every number of five and more digits in groups of three: "13,240 bytes".
std::string sentence(const std::string& words);

// 47,155
std::string grouped(uint64_t number);
// "47,155 bytes"
std::string exactBytes(uint64_t bytes);
// "47.2 kB (47,155 bytes)"
std::string bytes(uint64_t bytes);

// <p class="...">...</p>, with markup inside.
std::string paragraph(const std::string& inner, const char* kind = "note");
std::string span(const char* kind, const std::string& inner);

// A section with a heading; nothing where `inner` is empty.
std::string section(const char* id, const char* title, const std::string& inner);

// Rows of markup. A title that begins with '#' is a column of numbers. Columns that are empty in every row
// are left out; a table of many columns becomes cards where it would not fit.
std::string table(const std::string& caption, const std::vector<std::string>& titles,
                  const std::vector<std::vector<std::string>>& rows);

}  // namespace mkvx::html
