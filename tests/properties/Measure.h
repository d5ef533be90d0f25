// Throws a file at the plug-in: sniffs, opens, reads every track, seeks about, reads on; says what came of it
// and what it cost, and fails the test where a budget is exceeded.
//
// All of it content on a thread with little stack, so that too deep a recursion ends the test program.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "properties/HostileSource.h"

namespace testing_support {

// The budgets, for a source of n bytes.
namespace budget {
constexpr uint64_t kReads = 64, kReadsPerByte = 2;  // source reads while opening
constexpr uint64_t kHeap = 16ull << 20, kHeapPerByte = 64, kMostHeap = 512ull << 20;  // peak while opening
constexpr uint64_t kHeapPerLargestUnit = 4;  // on top of it while reading
constexpr size_t kStack = 256 << 10;
}  // namespace budget

struct Cost {
    uint64_t reads = 0;
    uint64_t bytesRead = 0;
    size_t heap = 0;  // peak
};

struct Outcome {
    size_t tracks = 0;
    size_t units = 0;  // of all tracks, up to a limit that stands in Measure.cpp
    uint64_t largestUnit = 0;
    std::string losses;  // "damaged 2, reader_limit 1", of opening and the first pass over the units
    Cost sniffing, opening, reading;
    unsigned visits =
        0;  // to the place that sniffing and opening looked at most often, in the first megabyte

    // "1 track, 3 units; damaged 2"
    std::string Text() const;
};

enum class Size { kKnown, kHidden };

// Sniffs and opens only.
Outcome OpenHostile(const Content& content, Size size = Size::kKnown);
// All of it. Further passes and seeks must add nothing to the budgets.
Outcome ThrowHostile(const Content& content, Size size = Size::kKnown);
Outcome ThrowHostile(const Bytes& bytes, Size size = Size::kKnown);

// Content `work` on a thread of budget::kStack bytes of stack (more under a sanitizer, whose frames are
// larger).
void OnSmallStack(const std::function<void()>& work);

// A table of hostile files: name, bytes, what comes of them. Every row is held to the budgets too.
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
