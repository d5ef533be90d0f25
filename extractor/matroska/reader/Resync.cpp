// Recovery in a damaged Segment: after a header that cannot be decoded, the search for the next level-1
// element.
#include <string.h>

#include "matroska/reader/MatroskaReader.h"

namespace MatroskaExtReader {

namespace {

constexpr uint32_t kWindow = 1024;
constexpr uint32_t kIdBytes = 4;
constexpr uint32_t kLastIndex = kWindow - kIdBytes;  // where a whole ID still fits
constexpr uint32_t kCarried = kIdBytes - 1;
constexpr uint32_t kMostExamined = 0x4FFFFF;

constexpr bool MayBeginLevelOne(uint8_t byte) {
    return (byte & 0xF0) == 0x10;
}

// Deliberate: it is the window's first four bytes that are looked at, wherever the candidate byte stands.
bool WindowBeginsWithLevelOne(const uint8_t* window) {
    return IsLevelOne(uint32_t{window[0]} << 24 | uint32_t{window[1]} << 16 | uint32_t{window[2]} << 8 |
                      window[3]);
}

}  // namespace

bool CMatroskaNode::Resync() {
    if (mParent.mId != id::kSegment) return false;
    const uint64_t start = mHeaderStart;
    uint8_t window[kWindow];
    mFile->SeekTo(start);
    if (Failed(mFile->Read(window, kWindow))) return false;
    uint32_t examined = 0;
    for (uint32_t index = 0;; ++index) {  // bounded by kMostExamined
        if (index > kLastIndex) {
            memmove(window, window + index, kCarried);
            if (examined > kMostExamined) return false;
            if (Failed(mFile->Read(window + kCarried, kWindow - kCarried))) return false;
            index = 0;
        }
        ++examined;
        if (MayBeginLevelOne(window[index]) && WindowBeginsWithLevelOne(window)) break;
    }
    mFile->SeekTo(start + examined);
    const bool found = !Failed(Parse());
    if (found) mFile->Losses.Add(LossKind::kResynchronised, start, mHeaderStart - start);
    return found;
}

}  // namespace MatroskaExtReader
