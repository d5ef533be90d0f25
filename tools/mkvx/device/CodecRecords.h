// The codec configuration records that a track's MetaData carries, taken apart as a decoder takes them apart.
//
// Pure functions over bytes that come from a file and may be anything: a record that ends too early or does
// not fit its own sizes gives what was whole in it, or nothing; no function looks beyond its bytes. The
// shapes are those of ISO/IEC 14496-1 (ESDS), ISO/IEC 14496-15 (avcC, hvcC), the Vorbis I and Xiph lacing
// documents, and Microsoft's BITMAPINFOHEADER and WAVEFORMATEX.
#pragma once
#include <cstdint>
#include <optional>
#include <vector>

namespace mkvx {

using Bytes = std::vector<uint8_t>;

// What the ESDS was built around: its decoder specific info, which ends where the record ends; nothing when
// the record has another shape. The sizes are read with the least significant group of seven bits first, as
// the plug-in writes them; some of its records lack their last byte, which is let pass.
Bytes specificInfo(const Bytes& esds);

// The parameter sets of the record, each behind a start code 00 00 00 01; empty when it is no such record.
Bytes avccParameterSets(const Bytes& avcc);
Bytes hvccParameterSets(const Bytes& hvcc);

// The three Vorbis headers in Xiph lacing. The comment header is made up: the MetaData does not carry the
// file's, and a decoder takes nothing from it.
Bytes vorbisHeaders(const Bytes& identification, const Bytes& setup);

// How many bytes a NAL unit's length takes in the track's units, as the record says; nothing when it is too
// short.
std::optional<unsigned> avccLengthBytes(const Bytes& avcc);
std::optional<unsigned> hvccLengthBytes(const Bytes& hvcc);

struct BitmapHeader {
    uint32_t compression = 0;  // a FourCC, its first character in the lowest byte
    Bytes rest;                // what follows the header: the codec's own configuration
};
std::optional<BitmapHeader> bitmapHeader(const Bytes& bytes);

struct WaveFormat {
    uint16_t tag = 0;
    uint16_t channels = 0;
    uint32_t sampleRate = 0;
    uint32_t byteRate = 0;    // per second
    uint16_t blockAlign = 0;  // bytes
    uint16_t bitsPerSample = 0;
    Bytes rest;
};
std::optional<WaveFormat> waveFormat(const Bytes& bytes);

}  // namespace mkvx
