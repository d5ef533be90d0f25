// Master elements as data: tables of element ID and member, and the one walk that reads them.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "matroska/reader/MatroskaReader.h"

namespace MatroskaExtReader {

// Reads the child element at `node` into `object` in a way that is not a plain member.
template <typename X>
using ChildHandler = Result (*)(X& object, CMatroskaNode* node);

template <typename X>
class ChildRow {
  public:
    constexpr ChildRow(uint32_t id, CUInt X::*member) : mId(id), mKind(kUint), mUint(member) {}
    constexpr ChildRow(uint32_t id, CInt X::*member) : mId(id), mKind(kInt), mInt(member) {}
    constexpr ChildRow(uint32_t id, CFloat X::*member) : mId(id), mKind(kFloat), mFloat(member) {}
    constexpr ChildRow(uint32_t id, CID X::*member) : mId(id), mKind(kCid), mCid(member) {}
    constexpr ChildRow(uint32_t id, CANSI X::*member) : mId(id), mKind(kAnsi), mAnsi(member) {}
    constexpr ChildRow(uint32_t id, CUTF8 X::*member) : mId(id), mKind(kUtf8), mUtf8(member) {}
    constexpr ChildRow(uint32_t id, ByteBuffer X::*member) : mId(id), mKind(kBinary), mBinary(member) {}
    constexpr ChildRow(uint32_t id, ChildHandler<X> handler) : mId(id), mKind(kHandler), mHandler(handler) {}

    uint32_t Id() const { return mId; }

    Result Read(X& object, CMatroskaNode* node) const {
        switch (mKind) {
            case kUint:
                return (object.*mUint).Parse(node);
            case kInt:
                return (object.*mInt).Parse(node);
            case kFloat:
                return (object.*mFloat).Parse(node);
            case kCid:
                return (object.*mCid).Parse(node);
            case kAnsi:
                return (object.*mAnsi).Parse(node);
            case kUtf8:
                return (object.*mUtf8).Parse(node);
            case kBinary:
                return (object.*mBinary).Parse(node);
            case kHandler:
                break;
        }
        return mHandler(object, node);
    }

  private:
    uint32_t mId;
    enum { kUint, kInt, kFloat, kCid, kAnsi, kUtf8, kBinary, kHandler } mKind;
    union {
        CUInt X::*mUint;
        CInt X::*mInt;
        CFloat X::*mFloat;
        CID X::*mCid;
        CANSI X::*mAnsi;
        CUTF8 X::*mUtf8;
        ByteBuffer X::*mBinary;
        ChildHandler<X> mHandler;
    };
};

// Walks the children of the element at `node` and lets `visit(child)` look at each until it answers false.
template <typename Visit>
Result VisitChildren(CMatroskaNode* node, Visit visit) {
    if (node == nullptr) return kNullNode;
    ChildWalk walk(node);
    if (!walk.HasChild()) return kFailure;
    do {  // bounded: every step moves forward within the element
        if (!visit(walk.Node())) break;
    } while (walk.Next());
    return kOk;
}

// The same for a master that is read in pieces: one whose children are all looked at, and take up most of it.
template <typename Visit>
Result VisitWhole(CMatroskaNode* node, Visit visit) {
    if (node == nullptr) return kNullNode;
    const CMatroskaFile::Whole pieces(node);
    return VisitChildren(node, visit);
}

// Reads the child at `node` as the first row with its ID says; without one it is skipped unread.
template <typename X, size_t N>
void ParseChild(X& object, CMatroskaNode* node, const ChildRow<X> (&rows)[N]) {
    for (const ChildRow<X>& row : rows) {
        if (row.Id() != node->Id()) continue;
        (void)row.Read(object, node);
        return;
    }
}

// Reads every child that has a row. A bad member does not fail its parent.
template <typename X, size_t N>
Result ParseChildren(X& object, CMatroskaNode* node, const ChildRow<X> (&rows)[N]) {
    return VisitChildren(node, [&](CMatroskaNode* child) {
        ParseChild(object, child, rows);
        return true;
    });
}

// The same for a master that is read in pieces.
template <typename X, size_t N>
Result ParseWhole(X& object, CMatroskaNode* node, const ChildRow<X> (&rows)[N]) {
    return VisitWhole(node, [&](CMatroskaNode* child) {
        ParseChild(object, child, rows);
        return true;
    });
}

}  // namespace MatroskaExtReader
