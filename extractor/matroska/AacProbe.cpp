#include "matroska/AacProbe.h"

#include <aacdecoder_lib.h>

namespace android {

// One layer. Deliberate: the transport type is ADIF although the configuration comes from a raw stream's
// container; the library's answer for this type is what devices have gone by.
AacProbe::AacProbe() : mDecoder(aacDecoder_Open(TT_MP4_ADIF, 1)) {}

AacProbe::~AacProbe() {
    if (mDecoder != nullptr) aacDecoder_Close(mDecoder);
}

AacProbe::Verdict AacProbe::Probe(const uint8_t* config, uint32_t size) {
    if (mDecoder == nullptr) return Verdict::kNotRefused;
    UCHAR* buffer = const_cast<UCHAR*>(config);  // the library's signature lacks the const that it keeps
    UINT length = size;
    const AAC_DECODER_ERROR error = aacDecoder_ConfigRaw(mDecoder, &buffer, &length);
    return error == AAC_DEC_UNSUPPORTED_FORMAT ? Verdict::kUnsupportedFormat : Verdict::kNotRefused;
}

}  // namespace android
