// A reference-counted cursor on one EBML element (RFC 8794): its ID, size and place, and how to reach its
// children and siblings.
//
// Positions are absolute byte offsets. A walk always moves forward and ends with the parent: for navigation
// an element's end is the parent's end where its own lies past that or past 2^63. (What resynchronisation
// finds behind a Segment's end is looked at, and ends the walk.) The payload size stays the element's own.
// What a node needs to know of its parent it copies when it is made, so no cursor depends on another's life.
// Nodes share the file's one read position: one thread at a time per file.
#pragma once

#include <utils/RefBase.h>

#include <stdint.h>

#include "matroska/reader/CheckedMath.h"
#include "matroska/reader/ElementHeader.h"
#include "matroska/reader/ElementIds.h"
#include "matroska/reader/Values.h"

namespace MatroskaExtReader {

class CMatroskaFile;

class CMatroskaNode : public android::RefBase {
  public:
    // The root: the whole file as one element without a header. Reads nothing.
    explicit CMatroskaNode(CMatroskaFile* file);
    // A child of `parent`, decoded at the file's current position; see IsValid.
    explicit CMatroskaNode(const CMatroskaNode* parent);

    // Decodes the header at the file's position. Nothing is known of the element after a failure.
    Result Parse();

    void SeekTo(int64_t position);
    int64_t GetPos() const;
    int64_t GetLength() const;
    Result Read(uint8_t* buffer, uint32_t size);

    android::sp<CMatroskaNode> Copy() const;

    // The first child (`id` 0), or the first child with `id`: through the SeekHead in a Segment, else by
    // walking when `scan` is set. Null when there is none.
    android::sp<CMatroskaNode> Child(uint32_t id, bool scan) const;
    // Makes this node the first child of `parent`, whatever it was; false when there is none.
    bool MoveToFirstChildOf(const CMatroskaNode* parent);
    // Moves this node to the next sibling, or to the next one with the same ID. False at the parent's end.
    bool Next(bool sameId);
    // The absolute position of the first SeekHead entry for `id` at or behind `from`; 0 when there is none.
    uint64_t FindPos(uint32_t id, int64_t from) const;

    // The first block element (BlockGroup or SimpleBlock) of this Cluster; null when there is none.
    android::sp<CMatroskaNode> GetFirstBlock() const;
    // Moves this node to the next block element of its Cluster.
    bool NextBlock();

    // The header could be decoded.
    bool IsValid() const { return mIsValid; }
    const ElementHeader& Header() const { return mHeader; }
    uint32_t Id() const { return mHeader.id; }
    uint64_t Size() const { return mHeader.size; }
    uint64_t HeaderStart() const { return mHeaderStart; }
    uint64_t DataStart() const { return mDataStart; }
    CMatroskaFile* File() const { return mFile; }
    bool IsBlockElement() const { return MatroskaExtReader::IsBlockElement(Id()); }
    bool HasUnknownSize() const { return mHeader.hasUnknownSize; }

    // Where the element's own size puts its end, not past 2^63.
    uint64_t PayloadEnd() const { return AddSaturating(mDataStart, Size()); }
    // Where navigation takes the end to be: within the parent and, for a Cluster of unknown size, where a
    // level-1 element begins among its children (that is looked for on the first call).
    uint64_t End() const {
        const bool isOpenCluster = HasUnknownSize() && Id() == id::kCluster;
        const uint64_t end = isOpenCluster ? OpenClusterEnd() : PayloadEnd();
        return mParent.mPresent && end > mParent.mEnd ? mParent.mEnd : end;
    }
    // Where what encloses the element ends, 0 where only a walk finds out.
    uint64_t EnclosingEnd() const { return mParent.mIsOpenCluster ? 0 : mParent.mEnd; }
    // Moves this node to a sibling that somebody else has decoded.
    void StandOn(const ElementHeader& header, uint64_t headerStart, uint64_t dataStart) {
        mHeader = header;
        mHeaderStart = headerStart;
        mDataStart = dataStart;
        mOpenEnd = 0;
        mIsValid = true;
    }
    // The same for a child of `parent`.
    void StandOnChildOf(const CMatroskaNode* parent, const ElementHeader& header, uint64_t headerStart,
                        uint64_t dataStart);
    // Where a walk over the children of a Cluster that ended with this node found the Cluster to end: it
    // stands on the element that ended it, or on the last child.
    uint64_t WalkEnd() const { return mIsValid && !IsLevelOne(Id()) ? End() : mHeaderStart; }
    // Spares a Cluster of unknown size the search, where a walk over its blocks has found the end already.
    // Any other knows better.
    void KnowOpenEnd(uint64_t end) { mOpenEnd = end; }

  private:
    friend class ChildWalk;

    // What navigation needs to know of the enclosing element.
    struct Parent {
        bool mPresent = false;
        uint32_t mId = 0;
        uint64_t mEnd = 0;            // 0 for the root: nothing follows it
        bool mIsOpenCluster = false;  // a Cluster of unknown size: a level-1 ID ends it
    };

    void BecomeFirstChildOf(const CMatroskaNode* parent);
    void BecomeChildOf(const CMatroskaNode* parent);
    void Forget();
    bool Find(uint32_t id, bool scan);
    bool TakeHeader();
    Result Decode();
    bool Step();
    bool Resync();
    uint64_t OpenClusterEnd() const;
    uint64_t FindOpenClusterEnd() const;

    CMatroskaFile* mFile;  // not owned
    Parent mParent;
    ElementHeader mHeader;
    bool mIsValid;
    uint64_t mHeaderStart;
    uint64_t mDataStart;
    mutable uint64_t mOpenEnd;  // the found end of a Cluster of unknown size; 0 until it was looked for
};

// A walk over the children of one element, in file order, on a node that is borrowed from the file: walks
// cost no allocation, however many masters a file has. Children must not be kept beyond the walk.
class ChildWalk {
  public:
    explicit ChildWalk(CMatroskaNode* parent);
    ~ChildWalk();
    ChildWalk(const ChildWalk&) = delete;
    ChildWalk& operator=(const ChildWalk&) = delete;

    // False when the element has no child with a readable header.
    bool HasChild() const { return mHasChild; }
    CMatroskaNode* Node() const { return mNode.get(); }
    bool Next() { return mNode->Next(false); }

  private:
    android::sp<CMatroskaNode> mNode;
    bool mHasChild;
};

}  // namespace MatroskaExtReader
