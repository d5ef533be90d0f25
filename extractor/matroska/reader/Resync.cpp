// Recovery in a damaged Segment: after a header that cannot be decoded, the search for the next level-1
// element.
#include <algorithm>

#include "matroska/reader/MatroskaReader.h"
#include "matroska/reader/Vint.h"

namespace MatroskaExtReader {

namespace {

constexpr uint32_t kWindow = 1024;
constexpr uint32_t kIdBytes = 4;
constexpr uint32_t kStep = kWindow - (kIdBytes - 1);  // a window begins with the last one's last three bytes
constexpr uint32_t kMostWindows = 5136;               // the first of them that end behind 5 MiB

// The first four bytes of each window. Deliberate: it is those that are compared, whichever byte of the
// window could begin a level-1 ID, so that an element is met at the front of a window only.
class Windows {
  public:
    Windows(CMatroskaFile* file, uint64_t start) : mFile(file) { mFile->SeekTo(start); }

    // False at a window that is not there whole.
    bool Next() {
        uint8_t* const next = mIsFirst ? mBytes : mBytes + kWindow - kStep;
        const uint32_t size = mIsFirst ? kWindow : kStep;
        if (!mIsFirst) std::copy(mBytes + kStep, mBytes + kWindow, mBytes);
        mIsFirst = false;
        return !Failed(mFile->Read(next, size));
    }
    bool BeginsLevelOne() const { return IsLevelOne(static_cast<uint32_t>(AppendBigEndian(0, mBytes, 4))); }

  private:
    CMatroskaFile* mFile;
    bool mIsFirst = true;
    uint8_t mBytes[kWindow];
};

}  // namespace

bool CMatroskaNode::Resync() {
    if (mParent.mId != id::kSegment) return false;
    const uint64_t start = mHeaderStart;
    if (!mFile->SeekBehindDamage(start)) return false;
    const bool found = !Failed(Parse());
    if (found) mFile->Losses.Add(LossKind::kResynchronised, start, mHeaderStart - start);
    return found;
}

bool CMatroskaFile::SeekBehindDamage(uint64_t start) {
    if (const DamageSearch* known = mDamage.Find(start)) {
        mPosition = known->stop;
        return known->isFound;
    }
    const uint64_t trouble = Trouble();
    const bool isFound = SearchLevelOne(start);
    if (Trouble() == trouble) mDamage.Note({start, mPosition, isFound});
    return isFound;
}

// The byte behind the one that was met decides where decoding goes on.
bool CMatroskaFile::SearchLevelOne(uint64_t start) {
    Windows windows(this, start);
    for (uint32_t i = 0; i < kMostWindows; ++i) {
        if (!windows.Next()) return false;
        if (!windows.BeginsLevelOne()) continue;
        mPosition = start + uint64_t{i} * kStep + 1;
        return true;
    }
    return false;
}

}  // namespace MatroskaExtReader
