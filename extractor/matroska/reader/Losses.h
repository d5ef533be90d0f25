// What the reader dropped, and why. The log must stay silent about most of it, so the reasons are kept here
// for those who ask; nothing in the reader's behaviour depends on them. The list is bounded, the count goes
// on.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <vector>

namespace MatroskaExtReader {

enum class LossKind {
    kResynchronised,     // bytes of a Segment skipped to the next readable element
    kBeyondSource,       // an element or block that reaches past what the source delivers
    kTooLarge,           // a size that no interface can carry or that passes a limit
    kLimit,              // more objects than the reader keeps
    kTooDeep,            // nested deeper than the reader follows
    kBadLacing,          // a block of which one lace does not fit
    kBadCompression,     // a frame left as stored: corrupt, or too large when inflated
    kRefusedAllocation,  // memory was refused
};

struct Loss {
    LossKind kind;
    uint64_t position;  // where in the file
    uint64_t size;      // how many bytes it concerns; 0 when that is not known
};

class Losses {
  public:
    static constexpr size_t kKept = 256;

    void Add(LossKind kind, uint64_t position, uint64_t size) {
        ++mCount;
        ++mCounts[static_cast<size_t>(kind)];
        if (mList.size() < kKept) mList.push_back(Loss{kind, position, size});
    }
    const std::vector<Loss>& List() const { return mList; }
    uint64_t Count() const { return mCount; }
    uint64_t Count(LossKind kind) const { return mCounts[static_cast<size_t>(kind)]; }

  private:
    std::vector<Loss> mList;
    uint64_t mCount = 0;
    uint64_t mCounts[static_cast<size_t>(LossKind::kRefusedAllocation) + 1] = {};
};

}  // namespace MatroskaExtReader
