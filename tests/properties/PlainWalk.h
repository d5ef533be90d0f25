// What a file delivers, found the slow way: every Cluster, every block element, one after the other, with
// nothing shared and nothing remembered. Tests compare it with what the iterators deliver.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <vector>

#include "matroska/reader/MatroskaReader.h"
#include "support/Listing.h"
#include "support/ModelState.h"

namespace testing_support {

// One answer to a read: a unit, or the refusal of a block.
struct Delivery {
    bool isRefused = false;
    Unit unit;  // empty where refused

    bool operator==(const Delivery& other) const {
        return isRefused == other.isRefused && (isRefused || unit == other.unit);
    }
};
using Deliveries = std::vector<Delivery>;
std::ostream& operator<<(std::ostream& out, const Delivery& delivery);

// The bytes of a unit as they can be compared: the records in front of RealMedia audio frames hold addresses,
// which are put to 0 here.
Bytes Comparable(Bytes bytes, const MatroskaExtReader::TrackEntry* track);

class PlainWalk {
  public:
    // Walks the whole of `file`, which was opened and has no other user, for one track.
    PlainWalk(MatroskaExtReader::CMatroskaFile* file, uint32_t trackNumber);

    Deliveries All() const { return From(0, 0); }
    // What follows a seek to `timeUs`.
    Deliveries FromTime(int64_t timeUs);

  private:
    struct Block {
        int64_t timeUs;
        bool isKey;
        Deliveries deliveries;  // several for a Vorbis block
    };
    struct Cluster {
        uint64_t position;      // from the Segment's data start
        bool hasBlock = false;  // of any track
        bool isLast = false;    // of its walk
        std::vector<Block> blocks;
    };
    static constexpr size_t kNone = SIZE_MAX;

    void WalkCluster(const MatroskaExtReader::CMatroskaNode& node);
    void TakeTimecode(const MatroskaExtReader::CMatroskaNode& cluster);
    Deliveries Deliver(MatroskaExtReader::BlockGroup& group, MatroskaExtReader::CMatroskaNode* node) const;
    Delivery DeliverOnce(MatroskaExtReader::BlockGroup& group, MatroskaExtReader::CMatroskaNode* node) const;
    int64_t TimeOf(const MatroskaExtReader::BlockGroup& group) const;
    Deliveries From(size_t cluster, size_t block) const;
    void WalkFrom(android::sp<MatroskaExtReader::CMatroskaNode> cluster);
    size_t FindCluster(uint64_t position);
    bool FindKeyBlock(const Cluster& cluster, int64_t timeUs, size_t* place) const;

    MatroskaExtReader::CMatroskaFile* mFile;
    uint32_t mTrackNumber;
    const MatroskaExtReader::TrackEntry* mTrack;
    uint64_t mTimecode = 0;
    std::vector<Cluster> mClusters;  // of the walk from the start, and of those from what Cues alone lead to
};

}  // namespace testing_support
