// What the reader dropped, and why. The log must stay silent about most of it, so the reasons are kept here
// for those who ask; nothing in the reader's behaviour depends on them. The list is bounded, the count goes
// on.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "matroska/reader/Array.h"

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

// How a kind of loss is told, here and by everybody who shows one.
struct LossText {
    LossKind kind;
    const char* identifier;  // for programs; never changes
    const char* sentence;    // of the element or block that it struck, "it"
    const char* total;       // of many: "{}" stands for their number with the noun
    const char* noun;        // one of them
};

constexpr LossText kLossTexts[] = {
    {LossKind::kResynchronised, "damaged", "it is damaged", "{} skipped to the next that can be read", "run"},
    {LossKind::kBeyondSource, "beyond_source", "it reaches past the end of the file",
     "{} reaching past the end of the file", "element"},
    {LossKind::kTooLarge, "elements_too_large", "it is larger than can be handled",
     "{} too large for the interfaces, and left out", "element"},
    {LossKind::kLimit, "reader_limit", "it is more than the reader keeps or asks for",
     "{} met of what the reader keeps or asks for; what is beyond is left out", "limit"},
    {LossKind::kTooDeep, "nested_too_deep", "it is nested deeper than the reader follows",
     "{} nested deeper than the reader follows", "element"},
    {LossKind::kBadLacing, "bad_lacing", "the sizes of its laces do not fit it", "{} whose laces do not fit",
     "block"},
    {LossKind::kBadCompression, "bad_compression", "it cannot be decompressed, and arrives as stored",
     "{} that cannot be decompressed, and arrive as stored", "frame"},
    {LossKind::kRefusedAllocation, "no_memory", "there was no memory for it",
     "no memory for {} that the file holds", "thing"},
};

constexpr size_t kLossKinds = sizeof kLossTexts / sizeof kLossTexts[0];

constexpr const LossText& TextOf(LossKind kind) {
    return kLossTexts[static_cast<size_t>(kind)];
}

constexpr bool AreInOrder(size_t from) {
    return from == kLossKinds || (static_cast<size_t>(kLossTexts[from].kind) == from && AreInOrder(from + 1));
}
static_assert(AreInOrder(0), "one row a kind, in the order of the kinds");
static_assert(kLossKinds == static_cast<size_t>(LossKind::kRefusedAllocation) + 1, "a row for each kind");

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
        if (mList.size() < kKept) (void)mList.Append(Loss{kind, position, size});  // the counts go on
    }
    const Array<Loss>& List() const { return mList; }
    uint64_t Count() const { return mCount; }
    uint64_t Count(LossKind kind) const { return mCounts[static_cast<size_t>(kind)]; }

  private:
    Array<Loss> mList;
    uint64_t mCount = 0;
    uint64_t mCounts[kLossKinds] = {};
};

}  // namespace MatroskaExtReader
