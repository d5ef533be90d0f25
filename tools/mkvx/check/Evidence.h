// Finding the element that decided in the file, for people who want to see it. The model keeps values, not
// places, so the place is looked up when it is asked for.
//
// All functions read through the file's one position, which they leave anywhere.
#pragma once
#include <initializer_list>
#include <optional>

#include "check/Model.h"
#include "matroska/reader/MatroskaReader.h"

namespace mkvx {

// The element whose header stands at `position`; an empty one where no header can be read.
Evidence evidenceAt(MatroskaExtReader::CMatroskaFile& file, uint64_t position);

// Bytes that are no element, or of which only the bytes matter.
Evidence bytesAt(MatroskaExtReader::CMatroskaFile& file, uint64_t offset, uint64_t size);

// The element reached from the one at `position` by this path of IDs. Of several equal children the last
// counts, as it does for the values that the reader keeps. Nothing when there is none.
std::optional<Evidence> evidenceBelow(MatroskaExtReader::CMatroskaFile& file, uint64_t position,
                                      std::initializer_list<uint32_t> path);

// The same with the element at `position` itself where the path leads nowhere.
Evidence evidenceBelowOr(MatroskaExtReader::CMatroskaFile& file, uint64_t position,
                         std::initializer_list<uint32_t> path);

}  // namespace mkvx
