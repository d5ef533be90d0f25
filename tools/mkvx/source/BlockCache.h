// A bounded cache of a source's blocks, and which of them a read makes it fetch.
//
// Blocks have one size and are numbered from the source's start; the last one may be shorter. They lie in
// sets of eight, of which the one that was used least recently gives way. One thread at a time; a forked
// child's blocks stay when it has ended.
#pragma once
#include <cstdint>
#include <optional>

#include "base/SharedMemory.h"

namespace mkvx {

class BlockCache {
  public:
    enum class Keeps { kBytes, kNumbersOnly };

    // As many blocks as fit `capacity` bytes, but eight at least. kNumbersOnly: finds out what would be
    // fetched, without the bytes.
    BlockCache(size_t blockSize, uint64_t capacity, Keeps keeps);

    struct Block {
        const uint8_t* bytes = nullptr;  // valid until the next begin()
        size_t size = 0;
    };
    // Nothing when it is not held.
    std::optional<Block> find(uint64_t number);

    // Room for the block's bytes, in place of another block; it is found once finish() was called.
    uint8_t* begin(uint64_t number);
    void finish(uint64_t number, size_t size);

    struct Run {
        uint64_t first = 0, count = 0;
    };
    // What to fetch in one request once block `first` is missing and blocks up to `last` are wanted:
    // consecutive blocks that are not held, no more than half of what the cache can hold.
    Run missingRun(uint64_t first, uint64_t last);

    size_t blockSize() const { return mBlockSize; }

  private:
    static constexpr size_t kWays = 8;
    struct Slot {
        uint64_t key;  // block number + 1; 0: free, or begun
        uint64_t lastUse;
        uint64_t size;  // of the block; for one that was begun, its number + 1
    };
    struct Table {
        uint64_t clock;
        Slot slots[1];  // mSlots of them
    };

    static size_t slotsFor(size_t blockSize, uint64_t capacity);
    static size_t tableBytes(size_t slots);
    Slot* setOf(uint64_t number) const;
    Slot* slotOf(uint64_t number) const;
    Slot* begunSlotOf(uint64_t number) const;
    uint8_t* bytesOf(const Slot& slot) const;

    const size_t mBlockSize;
    const size_t mSlots;
    const SharedMemory mMemory;  // the table, then the blocks
    const bool mKeepsBytes;
};

}  // namespace mkvx
