// Bytes of the source that are held for the reads of one walk, which would else ask for two or four at a
// time.
//
// Two kinds. A *head* is an element's header with what follows it, kHead bytes at the most: enough for the
// header, and for what a block or a Cluster begins with. A *whole* master is read in pieces of up to kMost
// bytes, where all of it is parsed anyway. No piece goes past the end of what encloses the element.
//
// A piece that comes short or fails counts as if it had never been asked for, and until its walk ends there
// are no further ones: the walk goes on by reads of just the bytes that are wanted. So pieces change what is
// asked of the source and nothing else. All are forgotten when the walk ends.
#pragma once

#include <media/stagefright/DataSource.h>

#include <stddef.h>
#include <stdint.h>

#include <memory>

namespace MatroskaExtReader {

// Bytes of the file that are at hand until the next read.
struct HeldBytes {
    const uint8_t* data;
    uint32_t size;
    uint64_t position;  // of the first, in the file

    HeldBytes Front(uint32_t n) const { return {data, n, position}; }
    HeldBytes Behind(uint32_t n) const { return {data + n, size - n, position + n}; }
};

// Held bytes that a parser takes from the front, with the reads that it would have asked the file for.
struct CountedBytes {
    const uint8_t* begin;
    const uint8_t* next;
    const uint8_t* end;
    uint64_t position;  // of `begin`, in the file
    uint64_t reads;
    uint64_t skipped;   // bytes that no read delivered
    uint64_t lastSkip;  // of these, those directly in front of `skipEnd`
    const uint8_t* skipEnd;

    explicit CountedBytes(const HeldBytes& held)
        : begin(held.data),
          next(held.data),
          end(held.data + held.size),
          position(held.position),
          reads(0),
          skipped(0),
          lastSkip(0),
          skipEnd(nullptr) {}
    // What so many requests would have brought.
    void Pass(unsigned n, unsigned requests) {
        next += n;
        reads += requests;
    }
    void Skip(uint64_t n) {
        next += n;
        skipped += n;
        lastSkip = n;
        skipEnd = next;
    }
    // Where the last read ended.
    const uint8_t* LastRead() const { return next == skipEnd ? next - lastSkip : next; }
};

class Pieces {
  public:
    static constexpr uint32_t kHead = 32;
    static constexpr uint32_t kLeast = 4u << 10, kMost = 64u << 10;  // of a whole master
    static constexpr uint32_t kMostFailures = 16;                    // in a file; then it is read without

    // What the reads of a walk may take at once.
    enum class Walk {
        kNone,   // no walk is on
        kHeads,  // a head where an element begins
        kWhole,  // pieces of the whole master
        kExact,  // nothing
    };

    // The `n` bytes at `position`, or null where not all of them are held.
    const uint8_t* Find(uint64_t position, uint32_t n) const {
        const uint64_t offset = position - mBegin;
        return offset <= mSize && n <= mSize - offset ? mBytes + offset : nullptr;
    }
    // How many bytes are held from `position` on.
    uint32_t HeldFrom(uint64_t position) const {
        const uint64_t offset = position - mBegin;
        return offset <= mSize ? static_cast<uint32_t>(mSize - offset) : 0;
    }
    HeldBytes From(uint64_t position) const {
        const uint32_t size = HeldFrom(position);
        return {size != 0 ? mBytes + (position - mBegin) : nullptr, size, position};
    }
    // Where the held bytes lie, and how many there are.
    uint64_t Begin() const { return mBegin; }
    uint32_t Size() const { return mSize; }
    // Reads `size` bytes at `position`, which take the place of what was held. False where the source does
    // not give them all; then nothing is held.
    bool Hold(android::DataSource& source, uint64_t position, uint32_t size);
    void Forget();

  private:
    uint8_t* Room(uint32_t size, uint64_t position, uint32_t kept);

    static constexpr uint32_t kSmall = 512;

    const uint8_t* mBytes = nullptr;
    uint64_t mBegin = UINT64_MAX;
    uint32_t mSize = 0;
    uint32_t mRoom = 0;  // of mLarge
    uint32_t mFailures = 0;
    uint8_t mSmall[kSmall];
    std::unique_ptr<uint8_t[]> mLarge;  // made for the first piece that needs it
};

}  // namespace MatroskaExtReader
