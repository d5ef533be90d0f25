// A table of hostile files: name, bytes, what comes of them. Every row is held to the budgets too.
#pragma once

#include <cstddef>

#include "properties/Measure.h"

namespace testing_support {

struct Row {
    const char* name;
    Content file;
    const char* outcome;  // as Outcome::Text has it
    Size size = Size::kKnown;
};

// While a file of a few tracks is sniffed and opened, no place is looked at more often than this. A walk that
// stood still would look at one without end.
constexpr unsigned kMostVisits = 64;

inline void CheckRow(const Row& row) {
    SCOPED_TRACE(row.name);
    const Outcome outcome = ThrowHostile(row.file, row.size);
    EXPECT_EQ(row.outcome, outcome.Text());
    EXPECT_LE(outcome.visits, kMostVisits);
}

template <size_t N>
void CheckRows(const Row (&rows)[N]) {
    for (const Row& row : rows) CheckRow(row);
}

inline Content Whole(const Document& document) {
    return {Stretch{document.bytes}};
}
inline Content Whole(const Elements& elements) {
    return Whole(Write(elements));
}

}  // namespace testing_support
