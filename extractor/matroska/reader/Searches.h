// Where searches through the file ended, by the place where they began: what lies on the way is the same for
// every track and seek, so each search is made once.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <algorithm>

#include "matroska/reader/Array.h"
#include "matroska/reader/ElementHeader.h"
#include "matroska/reader/Node.h"
#include "matroska/reader/OrderedSearch.h"

namespace MatroskaExtReader {

// For the level-1 element behind damage: where decoding goes on.
struct DamageSearch {
    uint64_t start, stop;
    bool isFound;
};

// For a Cluster, null where there is none.
struct ClusterSearch {
    uint64_t start;
    ElementHeader header;
    uint64_t headerStart = 0, dataStart = 0;
    bool isFound;

    ClusterSearch(uint64_t from, const CMatroskaNode* found) : start(from), isFound(found != nullptr) {
        if (!isFound) return;
        header = found->Header();
        headerStart = found->HeaderStart();
        dataStart = found->DataStart();
    }
    // Puts `node`, from which the search would begin, where it ends.
    bool Repeat(CMatroskaNode* node) const {
        if (isFound) node->StandOn(header, headerStart, dataStart);
        return isFound;
    }
};

// For the Timecode of the Cluster whose header is at `start`, where there is none: what it holds else.
struct UntimedCluster {
    uint64_t start, end;  // as a walk finds it
    bool hasBlock;
};

// A Search has the place as its `start`.
template <typename Search>
class Searches {
  public:
    // The search from `start`, null where it is not known.
    const Search* Find(uint64_t start) const {
        const size_t count = CountUpTo(start);
        return count != 0 && mSearches[count - 1].start == start ? &mSearches[count - 1] : nullptr;
    }
    // One that was not known. Beyond kMost, or without memory, it will be made again.
    void Note(const Search& search) {
        const size_t place = CountUpTo(search.start);
        if (mSearches.size() < kMost && mSearches.Append(search))
            std::rotate(mSearches.begin() + place, mSearches.end() - 1, mSearches.end());
    }

  private:
    static constexpr size_t kMost = 4096;

    size_t CountUpTo(uint64_t start) const {
        return MatroskaExtReader::CountUpTo<uint64_t>(start, mSearches.size(),
                                                      [this](size_t i) { return mSearches[i].start; });
    }

    Array<Search> mSearches;  // ascending by start
};

}  // namespace MatroskaExtReader
