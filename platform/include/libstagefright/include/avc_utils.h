// Helpers for H.264 (ISO/IEC 14496-10) elementary streams in Annex B form, and for AAC configurations.
//
// A NAL unit begins behind 00 00 01 and ends before the next such code or with the buffer, without trailing
// zero bytes but never with less than one byte. Emulation-prevention bytes are neither taken out nor stepped
// over.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <utils/Errors.h>
#include <utils/RefBase.h>

#include <media/stagefright/foundation/ABuffer.h>

namespace android {

class MetaData;

enum {
    kAVCProfileBaseline = 0x42,
    kAVCProfileMain = 0x4d,
    kAVCProfileExtended = 0x58,
    kAVCProfileHigh = 0x64,
    kAVCProfileHigh10 = 0x6e,
    kAVCProfileHigh422 = 0x7a,
    kAVCProfileHigh444 = 0xf4,
    kAVCProfileCAVLC444Intra = 0x2c,
};

// The cropped picture size of a sequence parameter set (from its NAL header byte on), and when asked for its
// sample aspect ratio, 0:0 when it has none. Aborts when the set ends early.
void FindAVCDimensions(const sp<ABuffer>& seqParamSet, int32_t* width, int32_t* height,
                       int32_t* sarWidth = NULL, int32_t* sarHeight = NULL);

// Takes the next NAL unit off [*data, *data + *size). OK with the unit, and *data at the start code behind it
// (null and 0 behind the last); -EAGAIN when there is none, or when it has no end: the buffer's end counts as
// one only with `startCodeFollows`.
status_t getNextNALUnit(const uint8_t** data, size_t* size, const uint8_t** nalStart, size_t* nalSize,
                        bool startCodeFollows = false);

// A decoder's format from an access unit that carries its parameter sets: MIME type, avcC record (2-byte
// lengths), size and, unless it is 1:1 or unknown, sample aspect ratio. Null when there is no sequence
// parameter set; aborts when there is one but no picture parameter set, or when it ends early.
sp<MetaData> MakeAVCCodecSpecificData(const sp<ABuffer>& accessUnit);

// Whether the access unit holds an IDR slice.
bool IsIDR(const sp<ABuffer>& accessUnit);

// Whether other pictures may refer to this one, judged by its first slice; true when it has no slice.
bool IsAVCReferenceFrame(const sp<ABuffer>& accessUnit);

const char* AVCProfileToString(uint8_t profile);

// A decoder's format for AAC: MIME type, ESDS (ISO/IEC 14496-1, type 0), sample rate and channels. `profile`
// is the ADTS one (object type less 1); `freqIndex` 0 to 11, else it aborts.
sp<MetaData> MakeAACCodecSpecificData(unsigned profile, unsigned freqIndex, unsigned channels);

}  // namespace android
