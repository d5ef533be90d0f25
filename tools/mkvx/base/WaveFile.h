// A sound as a canonical RIFF/WAVE file, for samples whose format is told when the first of them come.
//
// The file is made then, so that a decoder which gives nothing leaves nothing behind. Every failure throws
// FileFailure. One thread.
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>

#include "base/OutputFile.h"

namespace mkvx {

struct WaveShape {
    bool isFloat = false;  // else integers, of 8 bits without a sign
    uint32_t bits = 0;     // of one sample
    uint32_t rate = 0;     // Hz
    uint32_t channels = 0;
    bool operator==(const WaveShape& o) const {
        return isFloat == o.isFloat && bits == o.bits && rate == o.rate && channels == o.channels;
    }
};

class WaveFile {
  public:
    explicit WaveFile(const std::string& path) : mFile(path) {}

    // Little-endian, interleaved; all of one shape, and together no more than the format can count.
    void write(const WaveShape& shape, const void* samples, size_t size);
    bool hasSamples() const { return mShape.channels != 0; }
    // After the last sample; without any it throws.
    void close();

  private:
    std::vector<uint8_t> head() const;

    ExtractFile mFile;
    WaveShape mShape;
    uint32_t mSize = 0;  // bytes of samples
};

}  // namespace mkvx
