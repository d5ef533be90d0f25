// Which decoder a track needs and what it is told before the first unit: the part of the device's decoders
// that reads a track's MetaData, or what of it came along. Nothing but the MIME type and the configuration
// keys is looked at; the file and its CodecID are out of sight here as they are there.
//
// Deliberate: "audio/raw" is little-endian PCM of 16 bits unless a wave format says otherwise, since no key
// holds its sample size; "audio/lpcm" is big-endian integer PCM of 'bpSa' bits.
#pragma once
#include <stdexcept>

#include "decode/Protocol.h"

extern "C" {
#include <libavcodec/codec_id.h>
}

namespace mkvx {

// A track cannot be decoded, or not any further; what() says why, without the file's name.
class DecodeProblem : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Values that the MetaData does not hold are 0 or empty.
struct DecoderSetup {
    AVCodecID codec = AV_CODEC_ID_NONE;
    uint32_t tag = 0;  // the FourCC or format tag of the configuration's own header
    Bytes config;      // in the form that libavcodec takes
    int width = 0, height = 0;
    int sampleRate = 0, channels = 0;
    int bitsPerSample = 0, blockAlign = 0;
    int64_t bitRate = 0;
};

// Throws DecodeProblem when the track leads to no decoder.
DecoderSetup decoderSetup(const TrackSetup& format);

}  // namespace mkvx
