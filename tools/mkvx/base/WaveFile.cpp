#include "base/WaveFile.h"

#include <limits>

#include "base/Failure.h"

namespace mkvx {
namespace {

constexpr uint32_t kHeadSize = 44;

}  // namespace

std::vector<uint8_t> WaveFile::head() const {
    const uint32_t block = mShape.bits / 8 * mShape.channels;
    std::vector<uint8_t> head;
    appendText(head, "RIFF");
    appendLittle(head, kHeadSize - 8 + mSize, 4);
    appendText(head, "WAVEfmt ");
    appendLittle(head, 16, 4);
    appendLittle(head, mShape.isFloat ? 3 : 1, 2);
    appendLittle(head, mShape.channels, 2);
    appendLittle(head, mShape.rate, 4);
    appendLittle(head, uint64_t{mShape.rate} * block, 4);
    appendLittle(head, block, 2);
    appendLittle(head, mShape.bits, 2);
    appendText(head, "data");
    appendLittle(head, mSize, 4);
    return head;
}

void WaveFile::write(const WaveShape& shape, const void* samples, size_t size) {
    if (!hasSamples()) {
        mShape = shape;
        mFile.write(head());
    }
    if (!(shape == mShape))
        throw FileFailure(mFile.path(),
                          "the sound changes its format on the way (--frames N stops before that)");
    if (size > std::numeric_limits<uint32_t>::max() - kHeadSize - mSize)
        throw FileFailure(mFile.path(),
                          "the sound is longer than a WAV file can be (--frames N stops earlier)");
    mFile.write(samples, size);
    mSize += uint32_t(size);
}

void WaveFile::close() {
    if (!hasSamples())
        throw FileFailure(mFile.path(), "not written, no sound was decoded (--track chooses another track)");
    mFile.patch(0, head());
    mFile.close();
}

}  // namespace mkvx
