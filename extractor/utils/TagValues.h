// The two kinds of codec tag (CodecTags.h) as numbers.
#pragma once

#include <stdint.h>

namespace android {

// A four-character code: the first character is the lowest byte, as AVI and the codec records in Matroska
// files have it.
constexpr uint32_t FourCc(char a, char b, char c, char d) {
    return static_cast<uint32_t>(static_cast<uint8_t>(a)) |
           static_cast<uint32_t>(static_cast<uint8_t>(b)) << 8 |
           static_cast<uint32_t>(static_cast<uint8_t>(c)) << 16 |
           static_cast<uint32_t>(static_cast<uint8_t>(d)) << 24;
}

constexpr uint32_t FourCc(const char (&text)[5]) {
    return FourCc(text[0], text[1], text[2], text[3]);
}

// Format tags of a WAVEFORMATEX record (RFC 2361) that a Matroska codec ID stands for too.
namespace format_tag {

constexpr uint32_t kPcm = 0x1;
constexpr uint32_t kMpeg = 0x50;
constexpr uint32_t kMpegLayer3 = 0x55;
constexpr uint32_t kBigEndianPcm = 0xA0;
constexpr uint32_t kAac = 0xFF;
constexpr uint32_t kAc3 = 0x2000;
constexpr uint32_t kDts = 0x2001;
constexpr uint32_t kFlac = 0x5000;
constexpr uint32_t kVorbis = 0x5001;

}  // namespace format_tag

}  // namespace android
