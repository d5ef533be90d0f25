// Byte access, and the limits on what a file may make the reader keep.
#include "matroska/reader/MatroskaReader.h"

#include <string.h>

#include <algorithm>

namespace MatroskaExtReader {

CMatroskaFile::CMatroskaFile(const android::sp<android::DataSource>& source)
    : mSource(source),
      mPosition(0),
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

// Counts one more read, unless opening has used up what it may.
bool CMatroskaFile::MayAsk() const {
    const uint64_t reads = limit::kOpeningReads + limit::kOpeningReadsPerByte * mOpening.furthest;
    const uint64_t bytes = limit::kOpeningBytes + limit::kOpeningBytesPerByte * mOpening.furthest;
    mOpening.isExhausted = mOpening.isExhausted || mOpening.reads >= reads || mOpening.bytes >= bytes;
    if (!mOpening.isExhausted) ++mOpening.reads;
    return !mOpening.isExhausted;
}

void CMatroskaFile::NoteDelivery(uint64_t end, uint64_t bytes) const {
    mOpening.bytes += bytes;
    mOpening.furthest = std::max(mOpening.furthest, end);
}

void CMatroskaFile::FinishOpening() {
    mOpening.isOn = false;
    if (!mOpening.isExhausted) return;
    Losses.Add(LossKind::kLimit, mOpening.furthest, 0);
    Blocks.Clear();  // a run that ended for want of reads is not the Cluster's end
}

bool CMatroskaFile::Admit(Kept kind, const CMatroskaNode* node) {
    const size_t i = static_cast<size_t>(kind);
    if (mKept[i] < limit::kMostKept[i]) {
        ++mKept[i];
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
