// The elements of a file, depth first and in file order, as the plug-in's reader walks them: the same
// headers, the same clipping to the parent, the same search behind damage. Whoever wants to know what a file
// is made of goes along: the tree, the account of its bytes, the map of its layout.
//
// Where a reading by the bare format would differ: a master of unknown size other than Segment and Cluster is
// taken to reach to its parent's end, and a damaged Segment is searched for its next direct child.
//
// Nothing is kept but one cursor a level, of which there are at most kDeepest. Reads header by header; values
// are read only when asked for. Throws nothing. One thread; the source has to outlive the walk.
#pragma once
#include <media/stagefright/DataSource.h>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "device/Element.h"
#include "device/Losses.h"

namespace mkvx {

// What a value needs of its surroundings to be told as time or place.
struct ValueContext {
    uint64_t scale = 1000000;             // nanoseconds a timecode unit
    uint64_t segmentData = 0;             // file offset that positions count from
    std::optional<uint64_t> clusterTime;  // timecode units
};

// Timecode units as microseconds; nothing where they do not fit.
std::optional<int64_t> unitsToUs(__int128 units, uint64_t scale);

// What reading a track makes of a SimpleBlock or Block.
struct BlockReading {
    uint64_t track = 0;          // TrackNumber
    uint64_t dataOffset = 0;     // behind the block's header
    bool hasTrack = false;       // a TrackEntry has that number; otherwise nobody reads the block
    bool isTimeWrapped = false;  // its time does not fit and wraps
    bool isRefused = false;
    std::optional<LossKind> refusedFor;  // where that left a note
    std::optional<size_t> laces;         // frames in it, where it is laced and has a track
};

class ElementWalk {
  public:
    static constexpr size_t kDeepest = 64;
    // So many entries of tracks a document has at most.
    static const size_t kMostTracks;

    // What is known when the walk begins: nothing, or the document as opening reads it, with the unit of time
    // and the tracks that readBlock() needs.
    enum class Knows { kNothing, kDocument };

    explicit ElementWalk(const android::sp<android::DataSource>& source, Knows knows = Knows::kNothing);
    ~ElementWalk();
    ElementWalk(const ElementWalk&) = delete;
    ElementWalk& operator=(const ElementWalk&) = delete;

    // The next element or gap; nullopt at the end of the file. An element's value is there only where the
    // walk itself had to read it, which goes for a Cluster's Timestamp.
    std::optional<WalkItem> next();
    // The last item's children are not wanted. Without this the next item is the first of them.
    void skipChildren();
    // Goes on at `offset`, as if the item that would come next stood there: a child of the last master, or of
    // its parent where those are not wanted. Does nothing at the top level.
    void jumpTo(uint64_t offset);

    // Reads the value and notes of the element that next() gave last. It tells times and places as such where
    // the walk has passed through Info, Segment and the Cluster's Timestamp.
    void readValue(Element& element);
    // Of the SimpleBlock or Block that next() gave last, in a Cluster with this Timestamp.
    BlockReading readBlock(uint64_t clusterTime);
    const ValueContext& context() const;

    // Bytes in the file; nullopt where the source does not know.
    std::optional<uint64_t> length() const;
    // The same, with the largest position there is where the source does not know.
    uint64_t end() const;

  private:
    struct State;
    std::unique_ptr<State> mState;
};

}  // namespace mkvx
