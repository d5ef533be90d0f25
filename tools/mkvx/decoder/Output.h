// What becomes of decoded frames: a hash of all of them, one picture, or a sound file.
#pragma once
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "decode/Protocol.h"

struct AVFrame;
struct AVSHA;

namespace mkvx {

class FrameSink {
  public:
    virtual ~FrameSink() = default;
    virtual void take(const AVFrame& frame) = 0;
    // Is there something to finish?
    virtual bool hasFrames() const { return true; }
    // After the last frame. Throws FileFailure when the output could not be made.
    virtual void finish() {}
};

// The visible picture, plane by plane without padding, or the samples, interleaved; in the decoder's own
// pixel or sample format.
void packFrame(const AVFrame& frame, Bytes& out);

// SHA-1 over the packed frames, one behind the other.
class FrameHash : public FrameSink {
  public:
    FrameHash();
    ~FrameHash() override;
    void take(const AVFrame& frame) override;
    // 40 lower-case hex digits. The hash takes no more frames after it.
    std::string hex();

  private:
    std::unique_ptr<AVSHA, void (*)(void*)> mSha;
    Bytes mPacked;
};

// The first video frame at or after the time as a PNG file of 8-bit RGB; any first frame without a time.
std::unique_ptr<FrameSink> makePictureFile(const std::string& path, int64_t timeUs);

// All samples as a WAV file, in the decoder's sample format.
std::unique_ptr<FrameSink> makeSoundFile(const std::string& path);

}  // namespace mkvx
