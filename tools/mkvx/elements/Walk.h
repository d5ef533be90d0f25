// The elements of a file, depth first and in file order, as the plug-in's reader walks them: the same
// headers, the same clipping to the parent, the same search behind damage.
//
// Where a reading by the bare format would differ: a master of unknown size other than Segment and Cluster is
// taken to reach to its parent's end, and a damaged Segment is searched for its next direct child.
//
// Nothing is kept but one cursor a level, of which there are at most kDeepest. Reads header by header; values
// are read only when asked for. Throws nothing. One thread; the source has to outlive the walk.
#pragma once
#include <media/stagefright/DataSource.h>
#include <cstdint>
#include <optional>
#include <vector>

#include "elements/Model.h"
#include "elements/Values.h"
#include "matroska/reader/MatroskaReader.h"

namespace mkvx {

class ElementWalk {
  public:
    static constexpr size_t kDeepest = 64;

    explicit ElementWalk(const android::sp<android::DataSource>& source);

    // The next element or gap, with neither value nor meaning; nullopt at the end of the file.
    std::optional<TreeItem> next();
    // The last item's children are not wanted. Without this the next item is the first of them.
    void skipChildren() { mDescend = false; }
    // Reads the value, meaning and notes of the element that next() gave last. It tells times and places as
    // such where the walk has passed through Info, Segment and the Cluster's Timestamp.
    void readValue(Element& element);

    // Bytes in the file; nullopt where the source does not know.
    std::optional<uint64_t> length() const;

  private:
    using Node = MatroskaExtReader::CMatroskaNode;

    // One level: the cursor on the current child, and how far the level's elements have been walked.
    struct Level {
        android::sp<Node> node;
        uint32_t parentId = 0;
        uint64_t end = 0;     // of the parent
        uint64_t done = 0;    // where the current child ends
        bool isFirst = true;  // nobody has looked at the current child yet
        bool isOver = false;
    };

    void descend();
    Element take(Level& level);
    TreeItem item(Element element) const;
    TreeItem gap(uint64_t from, uint64_t to, bool isResynchronised) const;
    void noteDamage(Element& element, const Level& level) const;
    void remember(const Element& element);

    MatroskaExtReader::CMatroskaFile mFile;
    std::vector<Level> mLevels;
    bool mDescend = false;
    bool mHasPending = false;  // the cursor stands on an element that was not given yet, for a gap came first
    ValueContext mContext;
};

}  // namespace mkvx
