// From a codec tag to a MIME type, and what a MIME type asks of the extractor.
//
// A codec tag is either a FourCC (four characters, the first one in the lowest byte) or the numeric format
// tag of a WAVEFORMATEX record (RFC 2361). All functions may be called from any thread at any time after
// static initialisation. What they do is logged under the tag "Utils".
#pragma once

#pragma GCC visibility push(default)

namespace android {

// The MIME type of a codec tag, one of the MEDIA_MIMETYPE_ texts, or null for an unknown tag. Values up to
// 65534 are format tags, all others are FourCCs, whose letters match in either case.
const char* GetMimeType(unsigned int fourcc);

// The identifier by which the platform's optional codec library knows a FourCC, or -1 when that library is
// not installed or lacks the function. The library is asked anew on every call: not for per-frame use.
int getCodecIDFromFourCC(unsigned int fourcc);

// Whether a decoder for this MIME type (exact text; null is allowed) wants the track's extra data handed
// over.
bool isNeedExtra(const char* mime);

}  // namespace android

#pragma GCC visibility pop
