#include "matroska/reader/Node.h"

#include <algorithm>

#include "matroska/reader/MatroskaReader.h"

namespace MatroskaExtReader {

using android::sp;

CMatroskaNode::CMatroskaNode(CMatroskaFile* file)
    : mFile(file), mIsValid(true), mHeaderStart(0), mDataStart(0), mOpenEnd(0) {
    mHeader.size = file->Length();
}

CMatroskaNode::CMatroskaNode(const CMatroskaNode* parent)
    : mFile(parent->mFile), mIsValid(false), mHeaderStart(0), mDataStart(0), mOpenEnd(0) {
    BecomeChildOf(parent);
    Parse();
}

void CMatroskaNode::BecomeChildOf(const CMatroskaNode* parent) {
    mFile = parent->mFile;
    mParent.mPresent = true;
    mParent.mId = parent->Id();
    mParent.mEnd = parent->mParent.mPresent ? std::min(parent->PayloadEnd(), parent->mParent.mEnd)
                                            : parent->PayloadEnd();
    mParent.mIsOpenCluster = parent->HasUnknownSize() && parent->Id() == id::kCluster;
}

// From what is held, if a whole header is.
inline bool CMatroskaNode::TakeHeader() {
    unsigned reads = 0;
    const uint32_t bytes = TakeHeldHeader(mFile->HeldHeader(), &mHeader, &reads);
    if (bytes == 0) return MatroskaExtReader::TakeHeader(*mFile, &mHeader);
    mFile->PassHeld(bytes, reads);
    return true;
}

inline Result CMatroskaNode::Decode() {
    mHeaderStart = mFile->Position();
    mOpenEnd = 0;
    mFile->ExpectHeader(EnclosingEnd());
    mIsValid = TakeHeader();
    mDataStart = mFile->Position();
    if (!mIsValid) Forget();
    return mIsValid ? kOk : kFailure;
}

Result CMatroskaNode::Parse() {
    return Decode();
}

void CMatroskaNode::Forget() {
    mHeader = ElementHeader();
    mIsValid = false;
}

void CMatroskaNode::SeekTo(int64_t position) {
    mFile->SeekTo(static_cast<uint64_t>(position));
}
int64_t CMatroskaNode::GetPos() const {
    return static_cast<int64_t>(mFile->Position());
}
int64_t CMatroskaNode::GetLength() const {
    return static_cast<int64_t>(mFile->Length());
}
Result CMatroskaNode::Read(uint8_t* buffer, uint32_t size) {
    return mFile->Read(buffer, size);
}

sp<CMatroskaNode> CMatroskaNode::Copy() const {
    sp<CMatroskaNode> copy = new CMatroskaNode(mFile);
    copy->mParent = mParent;
    copy->mHeader = mHeader;
    copy->mIsValid = mIsValid;
    copy->mHeaderStart = mHeaderStart;
    copy->mDataStart = mDataStart;
    copy->mOpenEnd = mOpenEnd;
    return copy;
}

uint64_t CMatroskaNode::OpenClusterEnd() const {
    if (mOpenEnd == 0) mOpenEnd = FindOpenClusterEnd();
    return mOpenEnd;
}

uint64_t CMatroskaNode::FindOpenClusterEnd() const {
    sp<CMatroskaNode> child = new CMatroskaNode(mFile);
    child->BecomeFirstChildOf(this);
    if (child->IsValid() && !IsLevelOne(child->Id())) {
        while (child->Next(false)) {  // bounded: every step moves forward
        }
    }
    return child->WalkEnd();
}

void CMatroskaNode::BecomeFirstChildOf(const CMatroskaNode* parent) {
    BecomeChildOf(parent);
    mFile->SeekTo(parent->mDataStart);
    if (Failed(Parse())) (void)Resync();
}

bool CMatroskaNode::MoveToFirstChildOf(const CMatroskaNode* parent) {
    if (parent->Size() == 0) {
        Forget();
        return false;
    }
    BecomeFirstChildOf(parent);
    return IsValid() && !(mParent.mIsOpenCluster && IsLevelOne(Id()));
}

void CMatroskaNode::StandOnChildOf(const CMatroskaNode* parent, const ElementHeader& header,
                                   uint64_t headerStart, uint64_t dataStart) {
    BecomeChildOf(parent);
    StandOn(header, headerStart, dataStart);
}

sp<CMatroskaNode> CMatroskaNode::Child(uint32_t id, bool scan) const {
    if (Size() == 0) return nullptr;
    sp<CMatroskaNode> child = new CMatroskaNode(mFile);
    const bool hasChild = child->MoveToFirstChildOf(this);
    const bool isFound = id == 0 ? hasChild : child->Find(id, scan);
    return isFound ? child : nullptr;
}

bool CMatroskaNode::Find(uint32_t id, bool scan) {
    if (mParent.mId == id::kSegment) {
        const uint64_t listed = FindPos(id, 0);
        if (listed != 0) {
            mFile->SeekTo(listed);
            return !Failed(Parse()) && Id() == id;
        }
    }
    if (!IsValid()) return false;
    while (scan && Id() != id && Next(false)) {  // bounded: every step moves forward
    }
    return Id() == id;
}

// Decodes the header behind this element, in damaged Segments the next one that can be found.
inline bool CMatroskaNode::Step() {
    const uint64_t end = End();
    if (end >= mParent.mEnd) return false;
    mFile->SeekTo(end);
    if (Failed(Decode()) && !Resync()) return false;
    return !(mParent.mIsOpenCluster && IsLevelOne(Id()));
}

bool CMatroskaNode::Next(bool sameId) {
    const uint32_t wanted = Id();
    do {  // bounded: an element's end lies behind its header
        if (!Step()) return false;
    } while (sameId && Id() != wanted);
    return true;
}

uint64_t CMatroskaNode::FindPos(uint32_t id, int64_t from) const {
    const Segment& segment = mFile->Segment;
    for (const AutoPtr<Seek>& list : segment.SeekHeads) {
        for (const AutoPtr<SeekHead>& entry : list->Entries) {
            if (static_cast<uint32_t>(entry->SeekID.Get()) != id) continue;
            const uint64_t position = AddWrapping(entry->SeekPosition.Get(), segment.DataStart);
            if (static_cast<int64_t>(position) >= from) return position;
        }
    }
    return 0;
}

sp<CMatroskaNode> CMatroskaNode::GetFirstBlock() const {
    sp<CMatroskaNode> child = Child(0, true);
    if (child == nullptr || child->IsBlockElement() || child->NextBlock()) return child;
    return nullptr;
}

bool CMatroskaNode::NextBlock() {
    while (Step()) {  // bounded: every step moves forward
        if (IsBlockElement()) return true;
    }
    return false;
}

ChildWalk::ChildWalk(CMatroskaNode* parent) : mHasChild(false) {
    CMatroskaFile* file = parent->File();
    Array<sp<CMatroskaNode>>& spare = file->mSpareNodes;
    if (spare.empty()) {
        mNode = new CMatroskaNode(file);
    } else {
        mNode = std::move(spare.back());
        spare.PopBack();
    }
    if (parent->Size() == 0) return;
    mNode->BecomeFirstChildOf(parent);
    mHasChild = mNode->IsValid() && !(mNode->mParent.mIsOpenCluster && IsLevelOne(mNode->Id()));
}

ChildWalk::~ChildWalk() {
    (void)mNode->File()->mSpareNodes.Append(mNode);  // without memory it just goes
}

}  // namespace MatroskaExtReader
