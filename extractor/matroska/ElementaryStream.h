// A look into the first frames of a track that carries no usable codec configuration: pure functions over one
// frame's bytes. None allocates, logs, or looks at a byte at or beyond `size`; null data counts as size 0.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace android {

// H.264 (ISO/IEC 14496-10, Annex B). Whether a frame of more than 10 bytes begins with a four-byte start code
// and a sequence parameter set.
bool StartsWithSequenceParameterSet(const uint8_t* data, size_t size);

// Whether MakeAVCCodecSpecificData can be asked about this access unit: the platform's function aborts the
// process on a unit with a sequence parameter set but no picture parameter set, and on a sequence parameter
// set that ends early. The unit has to begin with a start code.
bool HoldsParameterSets(const uint8_t* data, size_t size);

// MPEG-4 visual (ISO/IEC 14496-2). The number of bytes in front of the first VOP start code: at most 200, at
// most size - 4, and that limit itself when there is none before it. 0 below 4 bytes.
size_t FindFirstVop(const uint8_t* data, size_t size);

// AC-3 (ETSI TS 102 366, 4.3 and annex E): what ParseA52SyncInfo needs to see of a frame.
constexpr size_t kA52HeaderSize = 7;

// Reads an AC-3 frame's header: the frame length in bytes, or 0 when this is none (a frame below
// kA52HeaderSize included). `flags` is the channel mode (10: Dolby Surround) plus 16 for a low-frequency
// channel, `sampleRate` is in Hz, `bitRate` in bit/s. A header that is refused late leaves the outputs that
// were read up to then written.
int ParseA52SyncInfo(const uint8_t* data, size_t size, int* flags, int* sampleRate, int* bitRate);

// The same for a caller that knows `buf` to hold kA52HeaderSize bytes.
int a52_syncinfo(unsigned char* buf, int* flags, int* sampleRate, int* bitRate);

}  // namespace android
