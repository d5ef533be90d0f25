// What a coded stream says of itself: profile, level, sample format, picture size and rate. Read from the
// configuration that the decoder gets, or else from a unit, as a decoder reads them.
//
// Pure functions over bytes that come from a file and may be anything: what cannot be read is left out, and
// no function looks beyond its bytes. Names and numbers are those of ITU-T H.264 and H.265, ISO/IEC 13818-2,
// 14496-2 and 14496-3, RFC 6386 (VP8), the VP9 bitstream specification, RFC 9639 (FLAC), ISO/IEC 11172-3.
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace mkvx {

using Bytes = std::vector<uint8_t>;

// 0 or empty: not told.
struct StreamFacts {
    std::string profile;  // "High 4:2:2", "Main 10", "2" of VP9, "HE-AAC"
    std::string level;    // "4.1"
    uint32_t bitDepth = 0;
    std::string chroma;              // "4:2:0"; "4:0:0" without colours
    uint32_t width = 0, height = 0;  // of the picture, pixels
    double frameRate = 0;            // pictures a second
    uint32_t sampleRate = 0;         // Hz, as it comes out
    uint32_t channels = 0;

    // "High 4:2:2, level 1.2, 10 bits, 4:2:2, 25 fps"; empty where nothing is known. Without sizes and what
    // sounds have beyond bits.
    std::string text() const;
};

// The configuration records of a track, by the keys of its MetaData, and what the file has beyond them.
struct StreamConfig {
    Bytes avcc, hvcc;
    Bytes specificInfo;  // within 'esds'
    Bytes mpeg4Headers;
    Bytes codecPrivate;
};

// `mime` is the plug-in's. A stream of several parameter sets is described by the first.
StreamFacts factsOfConfig(const std::string& mime, const StreamConfig& config);
// By the unit alone, as it is delivered: H.264 and HEVC with start codes.
StreamFacts factsOfUnit(const std::string& mime, const uint8_t* data, size_t size);
// What `more` knows and `facts` does not.
void complete(StreamFacts& facts, const StreamFacts& more);

// ---- one for each family, of bytes with start codes, of one frame or of one record

StreamFacts avcFacts(const Bytes& stream);
StreamFacts hevcFacts(const Bytes& stream);
StreamFacts vp8Facts(const uint8_t* frame, size_t size);
StreamFacts vp9Facts(const uint8_t* frame, size_t size);
StreamFacts vp9Features(const Bytes& codecPrivate);  // of WebM
StreamFacts mpeg2Facts(const Bytes& stream);         // MPEG-1 too
StreamFacts mpeg4Facts(const Bytes& stream);
StreamFacts aacFacts(const Bytes& audioSpecificConfig);
StreamFacts flacFacts(const Bytes& codecPrivate);
StreamFacts mpegAudioFacts(const uint8_t* frame, size_t size);

}  // namespace mkvx
