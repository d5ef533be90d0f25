// Recovery in a damaged Segment: after a header that cannot be decoded, the search for the next level-1
// element.
#include <algorithm>

#include "matroska/reader/MatroskaReader.h"
#include "matroska/reader/OrderedSearch.h"
#include "matroska/reader/Vint.h"

namespace MatroskaExtReader {

namespace {

constexpr uint32_t kWindow = 1024;
constexpr uint32_t kIdBytes = 4;
constexpr uint32_t kStep = kWindow - (kIdBytes - 1);  // a window begins with the last one's last three bytes
constexpr uint32_t kMostWindows = 5136;               // the first of them that end behind 5 MiB
constexpr size_t kMostSearches = 4096;                // that are remembered

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
        mEndsInSource = mFile->LeftInFile() >= size;
        return !Failed(mFile->Read(next, size));
    }
    bool BeginsLevelOne() const { return IsLevelOne(static_cast<uint32_t>(AppendBigEndian(0, mBytes, 4))); }
    // The last window could have been read: a failure was the source's.
    bool EndsInSource() const { return mEndsInSource; }

  private:
    CMatroskaFile* mFile;
    bool mIsFirst = true;
    bool mEndsInSource = true;
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
    const size_t known =
        CountUpTo<uint64_t>(start, mSearches.size(), [&](size_t i) { return mSearches[i].start; });
    if (known != 0 && mSearches[known - 1].start == start) {
        mPosition = mSearches[known - 1].stop;
        return mSearches[known - 1].isFound;
    }
    bool isFinal = true;
    const bool isFound = SearchLevelOne(start, &isFinal);
    const bool isBehindOthers = mSearches.empty() || mSearches.back().start < start;
    if (isFinal && isBehindOthers && mSearches.size() < kMostSearches)
        (void)mSearches.Append(Search{start, mPosition, isFound});  // without memory it is made again
    return isFound;
}

// The byte behind the one that was met decides where decoding goes on.
bool CMatroskaFile::SearchLevelOne(uint64_t start, bool* isFinal) {
    Windows windows(this, start);
    for (uint32_t i = 0; i < kMostWindows; ++i) {
        if (!windows.Next()) {
            *isFinal = mHasKnownLength && !windows.EndsInSource();
            return false;
        }
        if (!windows.BeginsLevelOne()) continue;
        mPosition = start + uint64_t{i} * kStep + 1;
        return true;
    }
    return false;
}

}  // namespace MatroskaExtReader
