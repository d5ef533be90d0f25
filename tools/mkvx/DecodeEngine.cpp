#include "DecodeEngine.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/log.h>
}
#include <cstring>
#include <new>

namespace mkvx {
namespace {

// The first message of error level since the last clear(). Replaces the library's printing to stderr.
class Complaints {
  public:
    static Complaints& instance() {
        static Complaints complaints;
        return complaints;
    }
    void clear() { mFirst.clear(); }
    const std::string& first() const { return mFirst; }

  private:
    Complaints() { av_log_set_callback(&Complaints::collect); }

    static void collect(void* object, int level, const char* format, va_list arguments) {
        Complaints& self = instance();
        if (level > AV_LOG_ERROR || !self.mFirst.empty()) return;
        char line[512];
        int prefix = 0;
        av_log_format_line2(object, level, format, arguments, line, sizeof(line), &prefix);
        self.mFirst = line;
        while (!self.mFirst.empty() && self.mFirst.back() == '\n') self.mFirst.pop_back();
        // "[h264 @ 0x55d0c8] no frame!": the address says nothing.
        const size_t at = self.mFirst.find(" @ 0x"), end = self.mFirst.find("] ");
        if (self.mFirst[0] == '[' && at < end && end != std::string::npos) self.mFirst.erase(0, end + 2);
    }

    std::string mFirst;
};

void setConfig(AVCodecContext& context, const Bytes& config) {
    if (config.empty()) return;
    context.extradata = static_cast<uint8_t*>(av_mallocz(config.size() + AV_INPUT_BUFFER_PADDING_SIZE));
    if (context.extradata == nullptr) throw std::bad_alloc();
    context.extradata_size = int(config.size());
    memcpy(context.extradata, config.data(), config.size());
}

void configure(AVCodecContext& context, const DecoderSetup& setup) {
    context.codec_tag = setup.tag;
    context.width = context.coded_width = setup.width;
    context.height = context.coded_height = setup.height;
    context.sample_rate = setup.sampleRate;
    if (setup.channels > 0) av_channel_layout_default(&context.ch_layout, setup.channels);
    context.bits_per_coded_sample = setup.bitsPerSample;
    context.block_align = setup.blockAlign;
    context.bit_rate = setup.bitRate;
    context.pkt_timebase = {1, 1000000};
    context.thread_count = 1;
    context.err_recognition = AV_EF_CRCCHECK | AV_EF_BITSTREAM | AV_EF_BUFFER;
    // Without a container's hint a decoder has to wait for pictures as the stream allows, not guess.
    if (setup.codec == AV_CODEC_ID_H264) context.strict_std_compliance = FF_COMPLIANCE_STRICT;
    setConfig(context, setup.config);
}

}  // namespace

void FreeAv::operator()(AVCodecContext* context) const {
    avcodec_free_context(&context);
}
void FreeAv::operator()(AVFrame* frame) const {
    av_frame_free(&frame);
}
void FreeAv::operator()(AVPacket* packet) const {
    av_packet_free(&packet);
}

std::string avErrorText(int code) {
    char text[AV_ERROR_MAX_STRING_SIZE] = "";
    return av_make_error_string(text, sizeof(text), code);
}

Decoder::Decoder(const DecoderSetup& setup, OnFrame onFrame)
    : mPacket(av_packet_alloc()), mFrame(av_frame_alloc()), mOnFrame(std::move(onFrame)) {
    const AVCodec* codec = avcodec_find_decoder(setup.codec);
    if (codec == nullptr)
        throw DecodeProblem(std::string("libavcodec has no decoder for ") + avcodec_get_name(setup.codec));
    mContext.reset(avcodec_alloc_context3(codec));
    if (!mContext || !mPacket || !mFrame) throw std::bad_alloc();
    configure(*mContext, setup);
    Complaints::instance().clear();
    const int result = avcodec_open2(mContext.get(), codec, nullptr);
    if (result >= 0) return;
    const std::string& complaint = Complaints::instance().first();
    throw DecodeProblem(std::string("the decoder ") + codec->name +
                        " refuses: " + (complaint.empty() ? avErrorText(result) : complaint));
}

Decoder::~Decoder() = default;

const char* Decoder::name() const {
    return mContext->codec->name;
}

void Decoder::feed(const void* data, size_t size, int64_t timeUs, bool sync) {
    // An empty packet would mean the end to the decoder; a unit of no bytes has nothing to decode.
    if (size == 0) return;
    if (size > INT32_MAX - AV_INPUT_BUFFER_PADDING_SIZE || av_new_packet(mPacket.get(), int(size)) < 0)
        throw DecodeProblem("a unit is too large for the decoder");
    memcpy(mPacket->data, data, size);
    mPacket->pts = timeUs;
    mPacket->flags = sync ? AV_PKT_FLAG_KEY : 0;
    step(mPacket.get());
    av_packet_unref(mPacket.get());
}

void Decoder::finish() {
    step(nullptr);
}

void Decoder::step(const AVPacket* packet) {
    Complaints& complaints = Complaints::instance();
    complaints.clear();
    mDamaged = false;
    const int sent = avcodec_send_packet(mContext.get(), packet);
    const int taken = takeFrames();
    const int failure = sent < 0 ? sent : taken;
    if (failure >= 0 && complaints.first().empty() && !mDamaged) return;
    ++mErrors;
    if (!mFirstError.empty()) return;
    mFirstError = !complaints.first().empty() ? complaints.first()
                  : failure < 0               ? avErrorText(failure)
                                              : "a damaged frame";
}

// All that the decoder has ready, which it bounds itself. A failure concerns one frame; what is behind it is
// still taken. Returns the first failure, or 0.
int Decoder::takeFrames() {
    int failure = 0;
    while (true) {
        const int result = avcodec_receive_frame(mContext.get(), mFrame.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) return failure;
        if (result < 0) {
            // The same failure twice in a row means that nothing moves any more.
            if (failure == result) return failure;
            failure = failure < 0 ? failure : result;
            continue;
        }
        mDamaged =
            mDamaged || mFrame->decode_error_flags != 0 || (mFrame->flags & AV_FRAME_FLAG_CORRUPT) != 0;
        mOnFrame(*mFrame);
        av_frame_unref(mFrame.get());
    }
}

}  // namespace mkvx
