// From Matroska's CodecPrivate to the codec configuration that the framework's decoders expect: one converter
// per codec family. A codec private is a pointer and a size; the pointer is null and the size 0 where the
// element is absent. Stateless; lines are logged under the tag "MatroskaExtExtractor".
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <utils/RefBase.h>

namespace android {

class MetaData;

// AAC without codec private.
enum class AacConfigVerdict {
    kOk,
    kNoProfile,     // the CodecID is the bare "A_AAC"
    kBadFrequency,  // not one of the twelve rates that have an index
    kBadProfile,    // the CodecID names a profile other than LC, LC with SBR, and LTP
};

// Builds the two bytes of an AudioSpecificConfig (ISO/IEC 14496-3, 1.6.2.1) from a CodecID (case does not
// matter), the sampling frequency in Hz and the channel count. `out` is written only for kOk. Each verdict
// logs its line.
__attribute__((warn_unused_result)) AacConfigVerdict MakeAacSpecificConfig(const char* codecId,
                                                                           double samplingFrequency,
                                                                           uint32_t channels, uint8_t out[2]);

// Size of a BITMAPINFOHEADER.
constexpr size_t kBitmapHeaderSize = 40;

// Writes a BITMAPINFOHEADER for a track that has none; `tag` is its compression FourCC. Pixels; planes, bit
// count and the rest stay 0.
void WriteBitmapHeader(uint8_t out[kBitmapHeaderSize], uint32_t width, uint32_t height, uint32_t tag);

// MPEG-4 visual: whether the codec private is only a bitmap header, so that the configuration has to come out
// of the first frame. The DivX 3 family ("DIV3", "DIV4") has no such configuration.
bool NeedsExtraDataStep(const uint8_t* codecPrivate, size_t size);

// Vorbis: whether the codec private is the laced triple of headers that addVorbis2CodecInfo takes. If not,
// `failedCondition` (may be null) gets the text of the first condition that does not hold.
bool VorbisHeadersAccepted(const uint8_t* codecPrivate, size_t size, const char** failedCondition);

// Vorbis: whether one of the first two headers takes more than one lace byte, for it has 255 bytes or more.
// Such a codec private can be sound, and is refused all the same.
bool VorbisLacesAreLong(const uint8_t* codecPrivate, size_t size);

// Stores the identification header as kKeyVorbisInfo and the setup header as kKeyVorbisBooks, data type 0.
// Aborts the process through the assertion logger on headers that VorbisHeadersAccepted refuses.
void addVorbis2CodecInfo(const sp<MetaData>& meta, const void* codecPrivate, size_t codecPrivateSize);

}  // namespace android
