// Where every frame of a file lies, found by a parser of its own that shares nothing with the reader: what
// the copy limit replays, and what all others' bytes are compared with.
//
// For the whole files of the benchmark: known sizes, one Segment, no damage. Anything else ends the program.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "Peer.h"

namespace bench {

struct IndexedFrame {
    uint64_t offset;  // of the stored bytes in the file
    uint32_t stored;
    uint32_t size;  // with the track's encoding undone
    int64_t timeUs;
    uint16_t track;
    bool isKey;
    bool beginsBlock;
};

struct IndexedTrack {
    enum class Encoding { kNone, kZlib, kRemovedHeader };
    bool isVideo = false;
    Encoding encoding = Encoding::kNone;
    std::string header;  // that was removed from each frame
};

class FrameIndex {
  public:
    explicit FrameIndex(const Source& source);

    const std::vector<IndexedFrame>& frames() const { return mFrames; }
    const std::vector<IndexedTrack>& tracks() const { return mTracks; }
    // The level-1 elements other than Clusters, as (offset, size).
    const std::vector<std::pair<uint64_t, uint64_t>>& head() const { return mHead; }
    int64_t durationUs() const;

  private:
    class Span;

    void readSegment(Span segment);
    void readInfo(Span info);
    void readTrack(Span entry);
    void readEncoding(Span encoding, IndexedTrack* track);
    void readCluster(Span cluster);
    void readGroup(Span group, int64_t clusterTime);
    void readBlock(Span block, int64_t clusterTime, bool isSimple);
    void addFrame(Span frame, int64_t timeUs, uint16_t track, bool isKey, bool beginsBlock);

    std::vector<uint8_t> mBytes;  // only while the constructor runs
    std::vector<IndexedFrame> mFrames;
    std::vector<IndexedTrack> mTracks;
    std::vector<std::pair<uint64_t, uint64_t>> mHead;
    std::map<uint64_t, uint16_t> mTrackOfNumber;
    uint64_t mScale = 1000000;
    double mDuration = 0;
};

}  // namespace bench
