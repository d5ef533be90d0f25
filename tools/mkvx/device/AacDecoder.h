// The AAC decoder library that devices use, as their decoder component uses it: raw access units, one at a
// time, behind an AudioSpecificConfig (ISO/IEC 14496-3, 1.6.2.1).
//
// One call decodes one raw data block. A unit of several, as lacing makes them, is refused whole. What is fed
// comes from a file and may be anything. One thread.
#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace mkvx {

using Bytes = std::vector<uint8_t>;

class AacDecoder {
  public:
    struct Sound {
        const int16_t* samples = nullptr;  // interleaved; good until the next call
        size_t frames = 0;                 // samples of each channel
        uint32_t channels = 0, rate = 0;   // Hz, as they come out
    };

    AacDecoder();
    ~AacDecoder();
    AacDecoder(const AacDecoder&) = delete;
    AacDecoder& operator=(const AacDecoder&) = delete;

    // What the library answers to the configuration; empty for one that it takes. Once, before the first
    // unit.
    std::string configure(const Bytes& config);
    // The same to a unit. `sound` is nothing after an error; the next unit is decoded as if none had come.
    std::string decode(const void* unit, size_t size, Sound& sound);

  private:
    struct State;
    std::unique_ptr<State> mState;
};

}  // namespace mkvx
