// Asks the platform's AAC decoder library what it makes of an AudioSpecificConfig (ISO/IEC 14496-3, 1.6.2.1).
#pragma once

#include <stdint.h>

typedef struct AAC_DECODER_INSTANCE* HANDLE_AACDECODER;

namespace android {

// Owns one decoder instance from construction to destruction; not for use by two threads at once.
class AacProbe {
  public:
    enum class Verdict {
        kNotRefused,         // accepted, or refused for a reason that says nothing about the format
        kUnsupportedFormat,  // the decoder knows that it cannot decode this format
    };

    AacProbe();
    ~AacProbe();
    AacProbe(const AacProbe&) = delete;
    AacProbe& operator=(const AacProbe&) = delete;

    // `config` is only read. A decoder that could not be opened refuses nothing.
    Verdict Probe(const uint8_t* config, uint32_t size);

  private:
    HANDLE_AACDECODER mDecoder;
};

}  // namespace android
