#include "device/AacDecoder.h"

#include <aacdecoder_lib.h>
#include <fmt/format.h>
#include <algorithm>
#include <iterator>
#include <limits>
#include <new>

namespace mkvx {
namespace {

// Eight channels of the longest frame that the library knows, with every extension.
constexpr size_t kMostSamples = size_t{8} * 8192;

struct ErrorRow {
    AAC_DECODER_ERROR code;
    const char* text;
};
constexpr ErrorRow kErrors[] = {
    {AAC_DEC_UNKNOWN, "of no known kind"},
    {AAC_DEC_TRANSPORT_SYNC_ERROR, "no frame is found"},
    {AAC_DEC_NOT_ENOUGH_BITS, "not enough bits"},
    {AAC_DEC_UNSUPPORTED_AOT, "unsupported object type"},
    {AAC_DEC_UNSUPPORTED_FORMAT, "unsupported format"},
    {AAC_DEC_UNSUPPORTED_CHANNELCONFIG, "unsupported channel configuration"},
    {AAC_DEC_UNSUPPORTED_SAMPLINGRATE, "unsupported sampling rate"},
    {AAC_DEC_PARSE_ERROR, "damaged"},
    {AAC_DEC_DECODE_FRAME_ERROR, "damaged"},
};

// "error 0x5, of no known kind"
std::string textOf(AAC_DECODER_ERROR code) {
    if (code == AAC_DEC_OK) return {};
    const auto* row = std::find_if(std::begin(kErrors), std::end(kErrors),
                                   [code](const ErrorRow& candidate) { return candidate.code == code; });
    return fmt::format("error 0x{:x}{}{}", unsigned(code), row != std::end(kErrors) ? ", " : "",
                       row != std::end(kErrors) ? row->text : "");
}

UCHAR* bytesOf(const void* data) {  // the library's signatures lack the const that it keeps
    return static_cast<UCHAR*>(const_cast<void*>(data));
}

}  // namespace

struct AacDecoder::State {
    // One layer.
    State() : handle(aacDecoder_Open(TT_MP4_RAW, 1)) {
        if (handle == nullptr) throw std::bad_alloc();
    }
    ~State() { aacDecoder_Close(handle); }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    AAC_DECODER_ERROR decode(UCHAR* unit, UINT size) {
        UINT left = size;
        const AAC_DECODER_ERROR filled = aacDecoder_Fill(handle, &unit, &size, &left);
        if (filled != AAC_DEC_OK) return filled;
        if (left > 0) return AAC_DEC_PARSE_ERROR;  // longer than any unit may be
        return aacDecoder_DecodeFrame(handle, samples.data(), INT(samples.size()), 0);
    }

    HANDLE_AACDECODER handle;
    std::vector<INT_PCM> samples = std::vector<INT_PCM>(kMostSamples);
};

static_assert(sizeof(INT_PCM) == sizeof(int16_t), "samples of 16 bits");

AacDecoder::AacDecoder() : mState(std::make_unique<State>()) {}

AacDecoder::~AacDecoder() = default;

std::string AacDecoder::configure(const Bytes& config) {
    UCHAR* data = bytesOf(config.data());
    UINT size = UINT(config.size());
    return textOf(aacDecoder_ConfigRaw(mState->handle, &data, &size));
}

std::string AacDecoder::decode(const void* unit, size_t size, Sound& sound) {
    sound = Sound();
    const bool fits = size <= std::numeric_limits<UINT>::max();
    const AAC_DECODER_ERROR error = fits ? mState->decode(bytesOf(unit), UINT(size)) : AAC_DEC_PARSE_ERROR;
    if (error != AAC_DEC_OK) {
        aacDecoder_SetParam(mState->handle, AAC_TPDEC_CLEAR_BUFFER, 1);
        return textOf(error);
    }
    const CStreamInfo* info = aacDecoder_GetStreamInfo(mState->handle);
    if (info == nullptr || info->numChannels <= 0 || info->frameSize <= 0) return "no sound";
    sound = {mState->samples.data(), size_t(info->frameSize), uint32_t(info->numChannels),
             uint32_t(std::max(info->sampleRate, 0))};
    return {};
}

}  // namespace mkvx
