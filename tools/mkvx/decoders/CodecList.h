// The decoders of a device, as its own codec list names them: media_codecs.xml with the files that it
// includes, in the form that the framework reads at its start. Encoders are passed over.
//
//   <MediaCodecs>
//     <Include href="media_codecs_google_audio.xml" />
//     <Decoders>
//       <MediaCodec name="OMX.vendor.avc.decoder" type="video/avc">
//         <Limit name="size" min="64x64" max="1920x1088" />
//         <Limit name="blocks-per-second" range="1-244800" />
//       </MediaCodec>
//       <MediaCodec name="OMX.vendor.audio.decoder"> <Type name="audio/mpeg"> ... </Type> </MediaCodec>
//
// The files come from anywhere and may hold anything: what is no codec list throws FileFailure with the file,
// the place and what is wrong with it. One thread.
#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace mkvx {

struct PictureSize {
    uint64_t width = 0, height = 0;  // pixels
};

// Both ends are allowed.
struct LimitRange {
    double least = 0, most = 0;
    bool holds(double value) const { return value >= least && value <= most; }
};

// What is not limited is absent or empty.
struct DecoderLimits {
    std::optional<PictureSize> smallest, largest;
    PictureSize alignment = {1, 1};    // of width and height
    PictureSize blockSize = {16, 16};  // in which the next two count
    std::optional<LimitRange> blocks, blocksPerSecond;
    std::optional<LimitRange> frameRate;  // a second
    std::optional<LimitRange> bitRate;    // bits a second
    std::optional<LimitRange> channels;
    std::vector<LimitRange> sampleRates;  // Hz; one of them has to hold
};

// One decoder for one MIME type.
struct DeviceDecoder {
    std::string name, mime;
    DecoderLimits limits;
};

struct CodecList {
    std::vector<DeviceDecoder> decoders;  // in the order of the list, which is that of preference
};

// `path`: the list itself. What it includes is looked for beside it, as on a device.
CodecList readCodecList(const std::string& path);

}  // namespace mkvx
