// Cue points straight from bytes in memory: what opening a long file spends its time on.
//
// Plain is a CuePoint that lies in the bytes with all that it holds, whose elements lie within one another,
// whose numbers have up to eight bytes, and that has none of what stands aside (MatroskaElements.h). Any
// other is left to the walk over its nodes (Cue::Parse), which makes the same of a plain one. What the walk
// would have asked of the source is counted, so that a limit of opening ends both at the same element.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "matroska/reader/ElementHeader.h"
#include "matroska/reader/ElementIds.h"
#include "matroska/reader/MatroskaElements.h"
#include "matroska/reader/Pieces.h"

namespace MatroskaExtReader {

// An element in memory.
struct PlainElement {
    ElementHeader header;
    const uint8_t* start;
    const uint8_t* data;
};

// Appends the plain points at the front of `bytes` to `cue`, as long as it gets no more than `mostPoints` and
// `mostPositions` of them. Answers how many, with the last of them.
size_t TakePlainPoints(CountedBytes* bytes, size_t mostPoints, size_t mostPositions, Cue* cue,
                       PlainElement* last);

// The member that holds the number of the child element with this ID; null where it is no such element.
inline uint64_t* NumberOf(CuePoint* point, uint32_t id) {
    return id == id::kCueTime ? &point->CueTime : nullptr;
}
inline uint64_t* NumberOf(CueTrackPosition* position, uint32_t id) {
    return id == id::kCueTrack             ? &position->CueTrack
           : id == id::kCueClusterPosition ? &position->CueClusterPosition
                                           : nullptr;
}

}  // namespace MatroskaExtReader
