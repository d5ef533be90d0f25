#include "matroska/reader/Inflate.h"

#include <string.h>

#include <algorithm>
#include <new>

namespace MatroskaExtReader {

namespace {

constexpr char kZlibVersion[] = "1.2.8";  // of the device; the library looks at the first character
constexpr uint32_t kStep = 1000;          // bytes of output after which a frame may count as complete
constexpr uint32_t kFirstGuess = 64 * 1024;
constexpr size_t kKeptOutput = 1024 * 1024;

}  // namespace

Inflater::~Inflater() {
    if (mIsOpen) inflateEnd(&mStream);
}

bool Inflater::Open() {
    if (mIsOpen) return inflateReset(&mStream) == Z_OK;
    memset(&mStream, 0, sizeof(mStream));
    mIsOpen = inflateInit_(&mStream, kZlibVersion, static_cast<int>(sizeof(mStream))) == Z_OK;
    return mIsOpen;
}

bool Inflater::Run(const uint8_t* data, uint32_t size, uint32_t limit) {
    mOutputSize = 0;
    bool isDecided = false;
    const bool whole = RunToStreamEnd(data, size, limit, &isDecided);
    // A stream without its end yields what the steps yield, and only they can say how much that is.
    const bool result = isDecided ? whole : RunInSteps(data, size, limit);
    if (!result) Trim();
    return result;
}

// Sound streams, which is nearly all of them, in as few calls as their output allows.
bool Inflater::RunToStreamEnd(const uint8_t* data, uint32_t size, uint32_t limit, bool* isDecided) {
    if (!Open()) {
        *isDecided = true;
        return false;
    }
    mStream.next_in = const_cast<uint8_t*>(data);
    mStream.avail_in = size;
    for (;;) {  // bounded by `limit`: every round doubles the room
        if (mOutputSize == mOutput.size()) {
            const size_t room = std::max<size_t>(kFirstGuess, mOutput.size() * 2);
            mOutput.resize(std::min<size_t>(room, size_t{limit} + 1));
        }
        mStream.next_out = mOutput.data() + mOutputSize;
        mStream.avail_out = static_cast<uInt>(mOutput.size() - mOutputSize);
        const int status = inflate(&mStream, Z_NO_FLUSH);
        mOutputSize = static_cast<uint32_t>(mOutput.size() - mStream.avail_out);
        if (mOutputSize > limit) {
            *isDecided = true;
            return false;
        }
        if (status == Z_STREAM_END) {
            *isDecided = true;
            return true;
        }
        if (status != Z_OK || mStream.avail_out != 0) return false;
    }
}

bool Inflater::RunInSteps(const uint8_t* data, uint32_t size, uint32_t limit) {
    mOutputSize = 0;
    if (!Open()) return false;
    mStream.next_in = const_cast<uint8_t*>(data);
    mStream.avail_in = size;
    for (;;) {  // bounded by `limit`
        if (limit - mOutputSize < kStep) return false;
        if (mOutput.size() < size_t{mOutputSize} + kStep) {
            mOutput.resize(std::max<size_t>(size_t{mOutputSize} + kStep, mOutput.size() * 2));
        }
        mStream.next_out = mOutput.data() + mOutputSize;
        mStream.avail_out = kStep;
        const int status = inflate(&mStream, Z_NO_FLUSH);
        if (status != Z_OK && status != Z_STREAM_END) return false;  // any error, or a dictionary is needed
        mOutputSize += kStep - mStream.avail_out;
        if (mStream.avail_out != 0 || mStream.avail_in == 0 || status == Z_STREAM_END) return true;
    }
}

void Inflater::Trim() {
    if (mOutput.size() <= kKeptOutput) return;
    std::vector<uint8_t>().swap(mOutput);
}

}  // namespace MatroskaExtReader
