// Byte access, and the limits on what a file may make the reader keep.
#include "matroska/reader/MatroskaReader.h"

#include <string.h>

#include <algorithm>

namespace MatroskaExtReader {

CMatroskaFile::CMatroskaFile(const android::sp<android::DataSource>& source, bool takesPieces)
    : mSource(source),
      mPosition(0),
      mWalk(takesPieces ? Pieces::Walk::kNone : Pieces::Walk::kExact),
      mLength(kMaxPosition),
      mHasKnownLength(false),
      mCachesNetwork((source->flags() & android::DataSource::kIsCachingDataSource) != 0),
      mMasterTrack(1),
      mKeptBytes(0) {
    off64_t length = 0;
    if (mSource->getSize(&length) == android::OK && length >= 0) {
        mLength = static_cast<uint64_t>(length);
        mHasKnownLength = true;
    }
}

CMatroskaFile::~CMatroskaFile() {}

template <typename T>
Result CMatroskaFile::Read(T& value) {
    uint8_t bytes[sizeof(T)];
    if (Failed(Read(bytes, sizeof(T)))) return kFailure;
    std::reverse(bytes, bytes + sizeof(T));  // the file is big-endian, the host is not
    memcpy(&value, bytes, sizeof(T));
    return kOk;
}

template Result CMatroskaFile::Read<uint8_t>(uint8_t&);
template Result CMatroskaFile::Read<int16_t>(int16_t&);
template Result CMatroskaFile::Read<uint32_t>(uint32_t&);
template Result CMatroskaFile::Read<int32_t>(int32_t&);
template Result CMatroskaFile::Read<uint64_t>(uint64_t&);
template Result CMatroskaFile::Read<int64_t>(int64_t&);
template Result CMatroskaFile::Read<float>(float&);
template Result CMatroskaFile::Read<double>(double&);

bool CMatroskaFile::FarEndAnswers(uint64_t position, uint64_t size) const {
    uint8_t last;
    if (mOpening.isOn && !MayAsk()) return false;
    return mSource->readAt(static_cast<off64_t>(position + size - 1), &last, 1) == 1;
}

// ---- pieces
// ------------------------------------------------------------------------------------------------------

CMatroskaFile::Heads::Heads(CMatroskaFile* file) : mFile(file), mOuter(file->mWalk) {
    if (mOuter == Pieces::Walk::kNone) mFile->mWalk = Pieces::Walk::kHeads;
}

CMatroskaFile::Whole::Whole(const CMatroskaNode* node) : mFile(node->File()), mOuter(mFile->mWalk) {
    if (!node->HasUnknownSize()) Begin(node->End(), Pieces::kLeast);
}

CMatroskaFile::Whole::Whole(CMatroskaFile* file, uint64_t end) : mFile(file), mOuter(file->mWalk) {
    Begin(end, Pieces::kHead);
}

void CMatroskaFile::Whole::Begin(uint64_t end, uint32_t firstPiece) {
    if (mOuter == Pieces::Walk::kWhole || mOuter == Pieces::Walk::kExact) return;
    mFile->mWalk = Pieces::Walk::kWhole;
    mFile->mWholeEnd = std::min(end, mFile->mLength);
    mFile->mFirstPiece = firstPiece;
    mFile->mNextPiece = 0;
}

// What a walk within another one holds is of use to both; and where it was refused a piece, so is the outer.
void CMatroskaFile::EndWalk(Pieces::Walk outer) {
    const bool isOutermost = outer == Pieces::Walk::kNone;
    if (mWalk == outer || (mWalk == Pieces::Walk::kExact && !isOutermost)) return;
    if (isOutermost) mPieces.Forget();
    mWalk = outer;
}

// Pieces grow as long as less is stepped over behind one than it holds.
const uint8_t* CMatroskaFile::HoldMore(uint32_t n) {
    if (mPosition >= mWholeEnd || n > mWholeEnd - mPosition) return nullptr;
    const bool goesOn = mPosition - mPieces.Begin() <= uint64_t{2} * mPieces.Size();
    mNextPiece = goesOn ? std::min(std::max(2 * mNextPiece, mFirstPiece), Pieces::kMost) : mFirstPiece;
    const uint32_t size = static_cast<uint32_t>(std::min<uint64_t>(mNextPiece, mWholeEnd - mPosition));
    return n <= size && HoldPiece(size) ? mPieces.Find(mPosition, n) : nullptr;
}

void CMatroskaFile::HoldHead(uint64_t end) {
    const uint64_t stop = std::min(end, mLength);
    const uint32_t size =
        mPosition < stop ? static_cast<uint32_t>(std::min<uint64_t>(Pieces::kHead, stop - mPosition)) : 0;
    if (mPieces.HeldFrom(mPosition) < std::min(size, Pieces::kHead / 2)) (void)HoldPiece(size);
}

HeldBytes CMatroskaFile::HoldStretch(uint64_t position, uint64_t end) {
    const uint64_t stop = std::min(end, mLength);
    if (mWalk != Pieces::Walk::kHeads || mOpening.isOn || position >= stop) return {nullptr, 0, position};
    SeekTo(position);
    (void)HoldPiece(static_cast<uint32_t>(std::min<uint64_t>(Pieces::kLeast, stop - position)));
    return mPieces.From(position);
}

bool CMatroskaFile::HoldPiece(uint32_t size) {
    const uint32_t bytes = size - std::min(size, mPieces.HeldFrom(mPosition));
    const bool isHeld = (!mOpening.isOn || MayHold(bytes)) && mPieces.Hold(*mSource, mPosition, size);
    if (!isHeld) mWalk = Pieces::Walk::kExact;
    if (isHeld && mOpening.isOn) mOpening.held += bytes;
    return isHeld;
}

HeldBytes CMatroskaFile::RestOfPiece(uint64_t position) const {
    const HeldBytes held = mPieces.From(position);
    const bool isInside = mWalk == Pieces::Walk::kWhole && position < mWholeEnd;
    const uint64_t size = isInside ? std::min<uint64_t>(held.size, mWholeEnd - position) : 0;
    const bool isSafe = !mOpening.isOn || CanAfford(size);
    return held.Front(isSafe ? static_cast<uint32_t>(size) : 0);
}

bool CMatroskaFile::MayHold(uint32_t bytes) const {
    const uint64_t unused = limit::kUnusedBytes + limit::kUnusedBytesPerByte * mOpening.furthest;
    return mOpening.held + bytes <= mOpening.served + unused;
}

void CMatroskaFile::FinishOpening() {
    mOpening.isOn = false;
    if (!mOpening.isExhausted) return;
    Losses.Add(LossKind::kLimit, mOpening.furthest, 0);
    Blocks.Clear();  // a run that ended for want of reads is not the Cluster's end
}

bool CMatroskaFile::Admit(Kept kind, const CMatroskaNode* node) {
    if (RoomFor(kind) != 0) {
        Admit(kind, 1);
        return true;
    }
    Losses.Add(LossKind::kLimit, node->HeaderStart(), 0);
    return false;
}

bool CMatroskaFile::AdmitBytes(uint64_t position, uint64_t size) {
    // Elements of a sound file do not overlap, so all of them together fit the file.
    const uint64_t bound = mHasKnownLength
                               ? std::min(limit::kKeptBytes, AddSaturating(mLength, limit::kKeptBeyondLength))
                               : limit::kKeptBytes;
    if (size > bound - mKeptBytes) {
        Losses.Add(LossKind::kLimit, position, size);
        return false;
    }
    mKeptBytes += size;
    return true;
}

}  // namespace MatroskaExtReader
