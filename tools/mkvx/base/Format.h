// The ways in which a command prints its result: text for people, or one of the stable machine formats.
//
// One pattern in every room: beside each result type R stand, in the room's Model.h, `void printText(const
// R&, std::FILE*)`, whose body is in the room's Text.cpp, and `void printJson(const R&, std::FILE*)`, whose
// body is in its Json.cpp and prints one line without its end; print() below chooses. What may be longer than
// memory is printed item by item, each of the items by such a pair, through a Listing (Listing.h).
//
// Printing looks at nothing but the model. Texts of the file that are not valid UTF-8 get U+FFFD in place of
// the bad bytes, since neither JSON nor a terminal can carry them.
#pragma once
#include <cstdio>

namespace mkvx {

enum class Format { kTable, kJson, kJsonLines, kCsv };

// Anything but JSON is text here.
template <typename Result>
void print(const Result& result, Format format, std::FILE* out) {
    if (format != Format::kJson && format != Format::kJsonLines) return printText(result, out);
    printJson(result, out);
    std::fputc('\n', out);
}

}  // namespace mkvx
