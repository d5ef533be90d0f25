// What a file holds beside the frames and descriptions that a device takes: data beside the frames of blocks,
// chapters that are to be played in another way, links to other files. Plain values and the class that
// gathers them along a walk over all elements.
#pragma once
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "device/ElementWalk.h"

namespace mkvx {

// BlockAdditions of the blocks with one track number.
struct AdditionTally {
    uint64_t blocks = 0, bytes = 0;
    uint64_t first = 0;   // position of the first BlockAdditions
    uint64_t lastId = 1;  // BlockAddID, RFC 9559, section 5.1.3.5.2.3
};

// An edition whose chapters are to be played in their own order.
struct OrderedEdition {
    uint64_t position = 0;
    uint64_t chapters = 0;
    bool isPlain = true;  // which comes to playing the file from its start
};

struct Extras {
    std::map<uint64_t, AdditionTally> additions;  // by the number that the block names
    std::optional<OrderedEdition> ordered;        // the first one
    uint64_t linkedChapters = 0;                  // that lie in other files
    std::optional<uint64_t> firstLinked;          // position of the first ChapterSegmentUUID
    std::optional<uint64_t> goesOn, cameBefore;   // positions of NextUUID and PrevUUID
};

class ExtrasTally {
  public:
    // `way`: the masters that the element lies in, from the Segment on. `blockTrack`: of the block before.
    void take(const Element& element, const std::vector<Element>& way, uint64_t blockTrack,
              ElementWalk& walk);
    // What there was, once the walk is over.
    Extras finish();

  private:
    void takeAddition(const Element& element, uint64_t blockTrack, ElementWalk& walk);
    void takeChapter(const Element& element, bool isTop, ElementWalk& walk);
    void endEdition();

    Extras mExtras;
    std::optional<OrderedEdition> mEdition;  // that the walk is in
    bool mIsOrdered = false;
    uint64_t mEndNs = 0;  // of the chapter before
};

}  // namespace mkvx
