// What mkvx explains: one element of the table or of a file.
#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "elements/Guide.h"
#include "elements/Model.h"
#include "source/Options.h"

namespace mkvx {

// Where an element stands in a file.
struct Place {
    std::vector<TreeItem> way;   // from the top to what holds the byte, with values
    std::vector<uint8_t> bytes;  // the first of them: an element's header and the start of its data
};

struct Occurrences {
    static constexpr size_t kShown = 5;
    std::vector<Element> first;  // with values
    uint64_t count = 0;
};

struct Explanation {
    uint32_t id = 0;                                       // 0 for bytes that belong to no element
    const MatroskaExtReader::ElementInfo* info = nullptr;  // null for an ID that is in no table
    std::optional<std::string> file;
    std::optional<uint64_t> offset;          // asked for: a place in `file`
    std::optional<Place> place;              // with `offset`
    std::optional<Occurrences> occurrences;  // with `file` and without `offset`
};

// Names from the top of a file down to the element, by the table.
std::vector<std::string> pathOf(const MatroskaExtReader::ElementInfo& info);

// `subject` is an element's name, its ID in hexadecimal, or with a file a byte's offset in decimal. Throws
// UsageFailure, with suggestions, for what is none of these, and FileFailure for a file that cannot be read.
Explanation explain(const std::string& subject, const std::string& file, const SourceOptions& options);

}  // namespace mkvx
