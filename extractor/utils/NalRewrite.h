// H.264 and HEVC frames: NAL units behind start codes (Annex B), or behind four-byte lengths as in ISO/IEC
// 14496-15. Pure functions over one frame's bytes, made to be called per frame; negative sizes count as 0.
#pragma once

#pragma GCC visibility push(default)

namespace android {

// The only width of a NAL unit's length that is rewritten.
constexpr unsigned kNalLengthBytes = 4;

// 0: the frame begins with the four-byte start code; 1: with anything else, the three-byte start code
// included; -1: fewer than 4 bytes.
int CheckH264Type(const unsigned char* data, int size);

// Overwrites, in place, each four-byte big-endian NAL length by the start code 00 00 00 01. Ends at the first
// length that cannot be true and returns the offset reached: the bytes that now are whole NAL units. The
// answer may exceed `size` by up to 4, see the body; nothing beyond `size` is read or written.
unsigned int H264DataPreprocess_AVC(unsigned char* data, int size);

// The rewriter for frames that need none: returns `size`, touches nothing.
int H264DataPreprocess_IEC(unsigned char* data, int size);

}  // namespace android

#pragma GCC visibility pop
