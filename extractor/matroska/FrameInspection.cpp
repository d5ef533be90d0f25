// A look into a track's first frames, for the configuration that its CodecPrivate lacks.
#include <utils/Errors.h>
#include <utils/String8.h>
#include <media/stagefright/MetaData.h>
#include <media/stagefright/foundation/ABuffer.h>

#include <new>

#include "include/avc_utils.h"
#include "matroska/ElementaryStream.h"
#include "matroska/MatroskaExtIterator.h"
#include "utils/CodecConfig.h"

namespace android {

using namespace MatroskaExtReader;

namespace {

constexpr int kMostInspectedBlocks = 50;

}  // namespace

// Reads the front pending block into `frame`, whose memory is kept when it is large enough.
bool MatroskaExtIterator::InspectFrontFrame(InspectedFrame* frame) {
    BlockGroup& group = *mPendingBlocks.front();
    frame->size = 0;
    const bool isSane = group.Block.DataSize <= limit::kInspectedBytes;
    const uint32_t size = isSane ? group.Block.GetSize(AnyNode(), mTrack) : 0;
    if (group.Block.IsRefused()) return false;
    if (!isSane || size > limit::kInspectedBytes) {
        mFile->Losses.Add(LossKind::kTooLarge, group.Block.DataPosition, group.Block.DataSize);
        return false;
    }
    if (frame->bytes == nullptr || frame->capacity < size) {
        frame->bytes.reset();
        frame->bytes.reset(new (std::nothrow) uint8_t[size]);
        if (frame->bytes == nullptr) return false;
        frame->capacity = size;
    }
    long sizeRead = static_cast<long>(size);
    // A frame that was cut short is inspected as far as it goes.
    (void)group.Block.Read(AnyNode(), mTrack, frame->bytes.get(), sizeRead,
                           static_cast<uint32_t>(mClusterInfo->Timecode.Get()));
    frame->size = static_cast<uint32_t>(sizeRead);
    return true;
}

bool MatroskaExtIterator::InspectFirstFrame(InspectedFrame* frame, long long* blockPos) {
    reset();
    const bool isRead = advance() && InspectFrontFrame(frame);
    if (isRead) *blockPos = static_cast<long long>(mPendingBlocks.front()->Block.DataPosition);
    reset();
    return isRead;
}

sp<MetaData> MatroskaExtIterator::getH264ExtraInfo() {
    sp<MetaData> format;
    InspectedFrame frame;
    reset();
    for (int pass = 0; pass < kMostInspectedBlocks && HasPending(); ++pass) {
        // The platform's own function ends the process over a unit without a picture parameter set.
        if (InspectFrontFrame(&frame) && StartsWithSequenceParameterSet(frame.bytes.get(), frame.size) &&
            HoldsParameterSets(frame.bytes.get(), frame.size)) {
            format = MakeAVCCodecSpecificData(new ABuffer(frame.bytes.get(), frame.size));
            break;
        }
        PopPending();
    }
    reset();
    return format;
}

unsigned char* MatroskaExtIterator::getM4vExtraInfo(long long& blockPos, unsigned int& length) {
    blockPos = 0;
    length = 0;
    InspectedFrame frame;
    if (!InspectFirstFrame(&frame, &blockPos)) return nullptr;
    length = static_cast<unsigned int>(PreProcessM4vExtraData(frame.bytes.get(), frame.size));
    return frame.bytes.release();
}

std::vector<uint8_t> MatroskaExtIterator::getMpeg4Headers() {
    InspectedFrame frame;
    long long blockPos;
    std::vector<uint8_t> headers;
    if (InspectFirstFrame(&frame, &blockPos)) {
        const size_t length = FindFirstVop(frame.bytes.get(), frame.size);
        headers.assign(frame.bytes.get(), frame.bytes.get() + length);
    }
    return headers;
}

void MatroskaExtIterator::getAC3Info(int& frameSize, int& sampleRate, int& bitRate) {
    frameSize = sampleRate = bitRate = 0;
    InspectedFrame frame;
    long long blockPos;
    int flags = 0;
    if (InspectFirstFrame(&frame, &blockPos)) {
        frameSize = ParseA52SyncInfo(frame.bytes.get(), frame.size, &flags, &sampleRate, &bitRate);
    }
}

int MatroskaExtIterator::a52_syncinfo(unsigned char* buf, int* flags, int* sampleRate, int* bitRate) {
    return android::a52_syncinfo(buf, flags, sampleRate, bitRate);
}

void MatroskaExtIterator::getDTSInfo(int& a, int& b, int& c) {
    InspectedFrame frame;
    long long blockPos;
    (void)InspectFirstFrame(&frame, &blockPos);
    a = b = c = 0;
}

}  // namespace android
