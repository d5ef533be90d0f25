#include "matroska/reader/Inflate.h"

#include <string.h>

#include <algorithm>
#include <new>

namespace MatroskaExtReader {

namespace {

constexpr char kZlibVersion[] = "1.2.8";  // of the device; the library looks at the first character
constexpr uint32_t kStep = 1000;          // bytes of output after which a frame may count as complete
constexpr uint32_t kFirstGuess = 64 * 1024;
constexpr uint32_t kDiscarded = 16 * 1024;
constexpr size_t kKeptOutput = 1024 * 1024;
// Output up to this, and this many times the input on top, gets memory before its size is known.
constexpr uint64_t kUnmeasured = 4u << 20, kUnmeasuredRatio = 16;

}  // namespace

Inflater::~Inflater() {
    if (mIsOpen) inflateEnd(&mStream);
}

bool Inflater::Begin(const uint8_t* data, uint32_t size) {
    if (mIsOpen) {
        if (inflateReset(&mStream) != Z_OK) return false;
    } else {
        memset(&mStream, 0, sizeof(mStream));
        mIsOpen = inflateInit_(&mStream, kZlibVersion, static_cast<int>(sizeof(mStream))) == Z_OK;
        if (!mIsOpen) return false;
    }
    mOutputSize = 0;
    mStream.next_in = const_cast<uint8_t*>(data);
    mStream.avail_in = size;
    return true;
}

bool Inflater::Run(const uint8_t* data, uint32_t size, uint32_t limit) {
    const uint64_t modest = std::min<uint64_t>(limit, kUnmeasured + kUnmeasuredRatio * uint64_t{size});
    Ending ending = RunToStreamEnd(data, size, static_cast<uint32_t>(modest));
    if (ending == Ending::kTooLarge && modest < limit) {
        Trim();
        uint32_t outputSize = 0;
        ending = Measure(data, size, limit, &outputSize);
        if (ending == Ending::kWhole) {
            // The end of the stream wants room to show itself.
            const bool hasRoom = Reserve(size_t{outputSize} + 1);
            ending = hasRoom ? RunToStreamEnd(data, size, limit) : Ending::kTooLarge;
        }
    }
    bool result = ending == Ending::kWhole;
    if (ending == Ending::kNone) {
        // A stream without its end yields what the steps yield, and only they can say how much that is.
        result = RunInSteps(data, size, limit, false);
        result = result && Reserve(size_t{mOutputSize} + kStep) && RunInSteps(data, size, limit, true);
    }
    if (!result) Trim();
    return result;
}

// Sound streams, which is nearly all of them, in as few calls as their output allows.
Inflater::Ending Inflater::RunToStreamEnd(const uint8_t* data, uint32_t size, uint32_t limit) {
    if (!Begin(data, size)) return Ending::kTooLarge;
    for (;;) {  // bounded by `limit`: every round doubles the room
        if (mOutputSize == mRoom) {
            const size_t room = std::max<size_t>(kFirstGuess, mRoom * 2);
            if (!Reserve(std::min<size_t>(room, size_t{limit} + 1))) return Ending::kTooLarge;
        }
        mStream.next_out = mOutput.get() + mOutputSize;
        mStream.avail_out = static_cast<uInt>(mRoom - mOutputSize);
        const int status = inflate(&mStream, Z_NO_FLUSH);
        mOutputSize = static_cast<uint32_t>(mRoom - mStream.avail_out);
        if (mOutputSize > limit) return Ending::kTooLarge;
        if (status == Z_STREAM_END) return Ending::kWhole;
        if (status != Z_OK || mStream.avail_out != 0) return Ending::kNone;
    }
}

// The same without keeping the output.
Inflater::Ending Inflater::Measure(const uint8_t* data, uint32_t size, uint32_t limit, uint32_t* outputSize) {
    uint8_t discarded[kDiscarded];
    if (!Begin(data, size)) return Ending::kTooLarge;
    for (*outputSize = 0;;) {  // bounded by `limit`
        mStream.next_out = discarded;
        mStream.avail_out = kDiscarded;
        const int status = inflate(&mStream, Z_NO_FLUSH);
        *outputSize += kDiscarded - mStream.avail_out;
        if (*outputSize > limit) return Ending::kTooLarge;
        if (status == Z_STREAM_END) return Ending::kWhole;
        if (status != Z_OK || mStream.avail_out != 0) return Ending::kNone;
    }
}

// With `keeps`, mOutput has room for all of it, and for one step more.
bool Inflater::RunInSteps(const uint8_t* data, uint32_t size, uint32_t limit, bool keeps) {
    uint8_t discarded[kStep];
    if (!Begin(data, size)) return false;
    for (;;) {  // bounded by `limit`
        if (limit - mOutputSize < kStep) return false;
        mStream.next_out = keeps ? mOutput.get() + mOutputSize : discarded;
        mStream.avail_out = kStep;
        const int status = inflate(&mStream, Z_NO_FLUSH);
        if (status != Z_OK && status != Z_STREAM_END) return false;  // any error, or a dictionary is needed
        mOutputSize += kStep - mStream.avail_out;
        if (mStream.avail_out != 0 || mStream.avail_in == 0 || status == Z_STREAM_END) return true;
    }
}

bool Inflater::Reserve(size_t room) {
    if (room <= mRoom) return true;
    std::unique_ptr<uint8_t[]> grown(new (std::nothrow) uint8_t[room]);
    if (grown == nullptr) return false;
    const size_t kept = std::min<size_t>(mOutputSize, mRoom);
    if (kept != 0) memcpy(grown.get(), mOutput.get(), kept);
    mOutput = std::move(grown);
    mRoom = room;
    return true;
}

void Inflater::Trim() {
    if (mRoom <= kKeptOutput) return;
    mOutput.reset();
    mRoom = 0;
}

}  // namespace MatroskaExtReader
