#include "decoder/Engine.h"

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
void FreeAv::operator()(AVCodecParserContext* parser) const {
    av_parser_close(parser);
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
    // A unit is a whole block and may hold several frames. Most decoders go through them one by one; this one
    // drops all but the first.
    if (setup.codec == AV_CODEC_ID_DTS) mParser.reset(av_parser_init(setup.codec));
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
    clearStep();
    if (mParser)
        sendParsed(mPacket->data, size);
    else
        send(mPacket.get());
    av_packet_unref(mPacket.get());
    noteStep();
}

void Decoder::finish() {
    clearStep();
    if (mParser) sendParsed(nullptr, 0);
    send(nullptr);
    noteStep();
}

// The frames that end within these bytes; null for those that are left. Every turn takes bytes or ends.
void Decoder::sendParsed(const uint8_t* data, size_t size) {
    do {
        uint8_t* frame = nullptr;
        int frameSize = 0;
        const int used = av_parser_parse2(mParser.get(), mContext.get(), &frame, &frameSize, data, int(size),
                                          mPacket->pts, AV_NOPTS_VALUE, 0);
        if (used < 0) return fail(used);
        if (frameSize > 0) {
            std::unique_ptr<AVPacket, FreeAv> packet(av_packet_alloc());
            if (!packet) throw std::bad_alloc();
            packet->data = frame;  // stays the parser's; the decoder takes a copy
            packet->size = frameSize;
            packet->pts = mParser->pts;
            send(packet.get());
        } else if (used == 0) {
            return;
        }
        data += used;
        size -= size_t(used);
    } while (size > 0);
}

void Decoder::send(const AVPacket* packet) {
    const int result = avcodec_send_packet(mContext.get(), packet);
    if (result < 0) fail(result);
    takeFrames();
}

// All that the decoder has ready, which it bounds itself. A failure concerns one frame; what is behind it is
// still taken.
void Decoder::takeFrames() {
    for (int last = 0;;) {
        const int result = avcodec_receive_frame(mContext.get(), mFrame.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) return;
        if (result < 0) {
            fail(result);
            if (result == last) return;  // the same failure twice in a row: nothing moves any more
            last = result;
            continue;
        }
        last = 0;
        mDamaged =
            mDamaged || mFrame->decode_error_flags != 0 || (mFrame->flags & AV_FRAME_FLAG_CORRUPT) != 0;
        mOnFrame(*mFrame);
        av_frame_unref(mFrame.get());
    }
}

void Decoder::clearStep() {
    Complaints::instance().clear();
    mFailure = 0;
    mDamaged = false;
}

void Decoder::noteStep() {
    const std::string& complaint = Complaints::instance().first();
    if (mFailure >= 0 && complaint.empty() && !mDamaged) return;
    ++mErrors;
    if (mFirstError.empty())
        mFirstError = !complaint.empty() ? complaint
                      : mFailure < 0     ? avErrorText(mFailure)
                                         : "a damaged frame";
}

}  // namespace mkvx
