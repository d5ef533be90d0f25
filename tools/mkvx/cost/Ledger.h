// The ledger of a source's reads: how many there were and what they cost, stage by stage. One thread.
#pragma once
#include <array>
#include <cstdint>
#include <map>
#include <memory>

#include "source/BlockCache.h"

namespace mkvx {

// What the reads were for, in the order in which a player causes them.
enum class CostStage : size_t {
    kSniffing,
    kHead,  // EBML and Segment headers, SeekHead, Info, and what is skipped beside them
    kTracks,
    kCues,
    kOther,          // Chapters, Attachments, Tags
    kClusters,       // passed over in search of the head
    kScan,           // visited for an index in place of Cues
    kConfiguration,  // frames looked into for a decoder's configuration
    kFirstUnits,     // one unit of each track
    kSeeks,          // each with one unit
    kDemux           // every unit of every track
};
constexpr size_t kCostStages = 11;

// As the formats name it: "sniffing", "first_units" and so on.
const char* toString(CostStage stage);

// Bytes are those that came, not those that were asked for.
struct StageCost {
    uint64_t reads = 0, bytes = 0;
    uint64_t distinct = 0;  // bytes that no read of this or an earlier stage had got
    uint64_t smallest = 0, largest = 0;
    uint64_t backwards = 0;                // reads that start in front of the end of the read before
    uint64_t requests = 0, requested = 0;  // what goes to the medium: as it is, or in blocks

    uint64_t again() const { return bytes - distinct; }
    void add(const StageCost& other);
};

using StageCosts = std::array<StageCost, kCostStages>;

// Bytes of a file, as ranges that neither touch nor overlap.
class ByteSet {
  public:
    // How many of [begin, end) were not in the set.
    uint64_t add(uint64_t begin, uint64_t end);

  private:
    std::map<uint64_t, uint64_t> mEndOf;  // by begin
};

class CostLedger {
  public:
    // `cache`: what stands between the reads and the medium, with blocks of a file of `size` bytes; null when
    // nothing does.
    CostLedger(std::unique_ptr<BlockCache> cache, uint64_t size) : mCache(std::move(cache)), mSize(size) {}

    // A read of `asked` bytes that gave `got`, or failed.
    void add(CostStage stage, uint64_t offset, uint64_t asked, int64_t got);
    const StageCosts& costs() const { return mCosts; }

  private:
    void request(StageCost& cost, uint64_t begin, uint64_t end);

    const std::unique_ptr<BlockCache> mCache;
    const uint64_t mSize;
    StageCosts mCosts;
    ByteSet mSeen;
    uint64_t mLastEnd = 0;
};

}  // namespace mkvx
