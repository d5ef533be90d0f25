// zlib (RFC 1950) inflation of one frame at a time, with one stream that is kept and reused.
//
// A frame counts as complete when output room was left over, all input was used, or the stream ended, looked
// at after every 1000 bytes of output; a truncated stream therefore yields what those steps had yielded. One
// thread at a time.
#pragma once

#include <stdint.h>
#include <zlib.h>

#include <memory>

namespace MatroskaExtReader {

class Inflater {
  public:
    Inflater() : mIsOpen(false) {}
    ~Inflater();
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;

    // Inflates `size` bytes at `data`. False when the stream is corrupt, needs a dictionary, or would yield
    // more than `limit` bytes or than there is memory for. The output is valid until the next call. What
    // claims to be very much larger than `size` is measured before it gets memory, so that a corrupt stream
    // never costs much.
    bool Run(const uint8_t* data, uint32_t size, uint32_t limit);
    const uint8_t* Output() const { return mOutput.get(); }
    uint32_t OutputSize() const { return mOutputSize; }
    // Gives back an output buffer that one large frame made large.
    void Trim();

  private:
    enum class Ending { kWhole, kTooLarge, kNone };

    bool Begin(const uint8_t* data, uint32_t size);
    Ending RunToStreamEnd(const uint8_t* data, uint32_t size, uint32_t limit);
    Ending Measure(const uint8_t* data, uint32_t size, uint32_t limit, uint32_t* outputSize);
    bool RunInSteps(const uint8_t* data, uint32_t size, uint32_t limit, bool keeps);
    // Room for at least that much output, keeping what is there; false when the memory is refused.
    bool Reserve(size_t room);

    z_stream mStream;
    bool mIsOpen;
    std::unique_ptr<uint8_t[]> mOutput;
    size_t mRoom = 0;  // of mOutput
    uint32_t mOutputSize = 0;
};

}  // namespace MatroskaExtReader
