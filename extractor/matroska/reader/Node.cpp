#include "matroska/reader/Node.h"

#include <algorithm>

#include "matroska/reader/MatroskaReader.h"

namespace MatroskaExtReader {

using android::sp;

CMatroskaNode::CMatroskaNode(CMatroskaFile* file) : mFile(file), mHeaderStart(0), mDataStart(0), mOpenEnd(0) {
    mId.Set(0);
    mSize.Set(file->Length());
}

CMatroskaNode::CMatroskaNode(const CMatroskaNode* parent)
    : mFile(parent->mFile), mHeaderStart(0), mDataStart(0), mOpenEnd(0) {
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

Result CMatroskaNode::Parse() {
    mHeaderStart = mFile->Position();
    mOpenEnd = 0;
    const bool read = !Failed(mId.Parse(this)) && !Failed(mSize.Parse(this));
    mDataStart = mFile->Position();
    return read ? kOk : kFailure;
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
    copy->mId = mId;
    copy->mSize = mSize;
    copy->mHeaderStart = mHeaderStart;
    copy->mDataStart = mDataStart;
    copy->mOpenEnd = mOpenEnd;
    return copy;
}

bool CMatroskaNode::IsBlockElement() const {
    return Id() == id::kBlockGroup || Id() == id::kSimpleBlock;
}

uint64_t CMatroskaNode::PayloadEnd() const {
    return AddSaturating(mDataStart, Size());
}

uint64_t CMatroskaNode::End() const {
    const bool isOpenCluster = HasUnknownSize() && Id() == id::kCluster;
    if (isOpenCluster && mOpenEnd == 0) mOpenEnd = FindOpenClusterEnd();
    const uint64_t end = isOpenCluster ? mOpenEnd : PayloadEnd();
    return mParent.mPresent ? std::min(end, mParent.mEnd) : end;
}

uint64_t CMatroskaNode::FindOpenClusterEnd() const {
    sp<CMatroskaNode> child = new CMatroskaNode(mFile);
    child->BecomeFirstChildOf(this);
    if (child->IsValid() && !IsLevelOne(child->Id())) {
        while (child->Next(false)) {  // bounded: every step moves forward
        }
    }
    // The walk stands on the element that ended it, or on the last child.
    const bool isChild = child->IsValid() && !IsLevelOne(child->Id());
    return isChild ? child->End() : child->HeaderStart();
}

void CMatroskaNode::BecomeFirstChildOf(const CMatroskaNode* parent) {
    BecomeChildOf(parent);
    mFile->SeekTo(parent->mDataStart);
    if (parent->mDataStart >= mParent.mEnd) {
        mId = CID();  // clipped to nothing: there is no header to read
        mHeaderStart = mDataStart = parent->mDataStart;
        return;
    }
    if (Failed(Parse()) && !Resync()) mId = CID();
}

sp<CMatroskaNode> CMatroskaNode::Child(uint32_t id, bool scan) const {
    if (Size() == 0) return nullptr;
    sp<CMatroskaNode> child = new CMatroskaNode(mFile);
    child->BecomeFirstChildOf(this);
    if (id != 0) return child->Find(id, scan) ? child : nullptr;
    const bool isForeign = child->mParent.mIsOpenCluster && IsLevelOne(child->Id());
    return child->IsValid() && !isForeign ? child : nullptr;
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

bool CMatroskaNode::Next(bool sameId) {
    if (!mParent.mPresent) return false;
    const uint32_t wanted = Id();
    do {  // bounded: an element's end lies behind its header
        const uint64_t end = End();
        if (end >= mParent.mEnd) return false;
        mFile->SeekTo(end);
        if (!FinishStep()) return false;
    } while (sameId && Id() != wanted);
    return true;
}

// Decodes the header at the position, in damaged Segments the next one that can be found.
bool CMatroskaNode::FinishStep() {
    if (Failed(Parse()) && !Resync()) return false;
    return !(mParent.mIsOpenCluster && IsLevelOne(Id()));
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
    while (Next(false)) {  // bounded: every step moves forward
        if (IsBlockElement()) return true;
    }
    return false;
}

ChildWalk::ChildWalk(CMatroskaNode* parent) : mHasChild(false) {
    CMatroskaFile* file = parent->File();
    std::vector<sp<CMatroskaNode>>& spare = file->mSpareNodes;
    if (spare.empty()) {
        mNode = new CMatroskaNode(file);
    } else {
        mNode = spare.back();
        spare.pop_back();
    }
    if (parent->Size() == 0) return;
    mNode->BecomeFirstChildOf(parent);
    mHasChild = mNode->IsValid() && !(mNode->mParent.mIsOpenCluster && IsLevelOne(mNode->Id()));
}

ChildWalk::~ChildWalk() {
    mNode->File()->mSpareNodes.push_back(mNode);
}

}  // namespace MatroskaExtReader
