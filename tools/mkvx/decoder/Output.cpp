#include "decoder/Output.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/imgutils.h>
#include <libavutil/samplefmt.h>
#include <libavutil/sha.h>
#include <libswscale/swscale.h>
}
#include <algorithm>
#include <cstring>

#include "base/Failure.h"
#include "base/OutputFile.h"
#include "base/Text.h"
#include "base/WaveFile.h"
#include "decoder/Engine.h"

namespace mkvx {
namespace {

void packSamples(const AVFrame& frame, Bytes& out) {
    const auto format = AVSampleFormat(frame.format);
    const size_t width = size_t(av_get_bytes_per_sample(format));
    const size_t channels = size_t(frame.ch_layout.nb_channels), samples = size_t(frame.nb_samples);
    out.resize(samples * channels * width);
    if (!av_sample_fmt_is_planar(format)) {
        memcpy(out.data(), frame.extended_data[0], out.size());
        return;
    }
    uint8_t* to = out.data();
    for (size_t sample = 0; sample < samples; ++sample)
        for (size_t channel = 0; channel < channels; ++channel, to += width)
            memcpy(to, frame.extended_data[channel] + sample * width, width);
}

void packPicture(const AVFrame& frame, Bytes& out) {
    const auto format = AVPixelFormat(frame.format);
    const int size = av_image_get_buffer_size(format, frame.width, frame.height, 1);
    if (size < 0) throw DecodeProblem("a picture of no known shape");
    out.resize(size_t(size));
    av_image_copy_to_buffer(out.data(), size, frame.data, frame.linesize, format, frame.width, frame.height,
                            1);
}

using FramePtr = std::unique_ptr<AVFrame, FreeAv>;

using ScalerPtr = std::unique_ptr<SwsContext, void (*)(SwsContext*)>;

// To RGB of the same size, by the colour matrix and range that the decoder says.
ScalerPtr makeScaler(const AVFrame& frame) {
    ScalerPtr scaler(
        sws_getContext(frame.width, frame.height, AVPixelFormat(frame.format), frame.width, frame.height,
                       AV_PIX_FMT_RGB24, SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT, nullptr,
                       nullptr, nullptr),
        sws_freeContext);
    if (scaler)  // formats that are RGB already have no matrix to set
        (void)sws_setColorspaceDetails(scaler.get(), sws_getCoefficients(frame.colorspace),
                                       frame.color_range == AVCOL_RANGE_JPEG,
                                       sws_getCoefficients(SWS_CS_DEFAULT), 1, 0, 1 << 16, 1 << 16);
    return scaler;
}

FramePtr toRgb(const AVFrame& frame) {
    FramePtr rgb(av_frame_alloc());
    if (!rgb) throw std::bad_alloc();
    rgb->format = AV_PIX_FMT_RGB24;
    rgb->width = frame.width;
    rgb->height = frame.height;
    const ScalerPtr scaler = makeScaler(frame);
    if (!scaler || av_frame_get_buffer(rgb.get(), 0) < 0) throw DecodeProblem("cannot convert the picture");
    sws_scale(scaler.get(), frame.data, frame.linesize, 0, frame.height, rgb->data, rgb->linesize);
    return rgb;
}

using PacketPtr = std::unique_ptr<AVPacket, FreeAv>;

PacketPtr encodePng(const AVFrame& rgb) {
    const AVCodec* codec = avcodec_find_encoder(AV_CODEC_ID_PNG);
    if (codec == nullptr) throw DecodeProblem("libavcodec has no PNG encoder");
    const std::unique_ptr<AVCodecContext, FreeAv> context(avcodec_alloc_context3(codec));
    PacketPtr packet(av_packet_alloc());
    if (!context || !packet) throw std::bad_alloc();
    context->width = rgb.width;
    context->height = rgb.height;
    context->pix_fmt = AVPixelFormat(rgb.format);
    context->time_base = {1, 1};
    context->thread_count = 1;
    int result = avcodec_open2(context.get(), codec, nullptr);
    if (result >= 0) result = avcodec_send_frame(context.get(), &rgb);
    if (result >= 0) result = avcodec_receive_packet(context.get(), packet.get());
    if (result < 0) throw DecodeProblem("cannot write the picture as PNG: " + avErrorText(result));
    return packet;
}

class PictureFile : public FrameSink {
  public:
    PictureFile(std::string path, int64_t timeUs) : mPath(std::move(path)), mTimeUs(timeUs) {}

    void take(const AVFrame& frame) override {
        const bool early =
            frame.best_effort_timestamp != AV_NOPTS_VALUE && frame.best_effort_timestamp < mTimeUs;
        if (!mPicture && !early) mPicture = encodePng(*toRgb(frame));
    }
    bool hasFrames() const override { return mPicture != nullptr; }
    void finish() override {
        if (!mPicture)
            throw FileFailure(mPath,
                              fmt::format("not written, no picture was decoded at or after {} (--track "
                                          "chooses another track)",
                                          clockTime(std::max<int64_t>(mTimeUs, 0))));
        ExtractFile file(mPath);
        file.write(mPicture->data, size_t(mPicture->size));
        file.close();
    }

  private:
    std::string mPath;
    int64_t mTimeUs;
    PacketPtr mPicture;
};

class SoundFile : public FrameSink {
  public:
    explicit SoundFile(const std::string& path) : mFile(path) {}

    void take(const AVFrame& frame) override {
        packFrame(frame, mPacked);
        mFile.write(shapeOf(frame), mPacked.data(), mPacked.size());
    }
    bool hasFrames() const override { return mFile.hasSamples(); }
    void finish() override { mFile.close(); }

  private:
    static WaveShape shapeOf(const AVFrame& frame) {
        const auto format = AVSampleFormat(frame.format);
        const AVSampleFormat packed = av_get_packed_sample_fmt(format);
        return {packed == AV_SAMPLE_FMT_FLT || packed == AV_SAMPLE_FMT_DBL,
                uint32_t(av_get_bytes_per_sample(format)) * 8, uint32_t(frame.sample_rate),
                uint32_t(frame.ch_layout.nb_channels)};
    }

    WaveFile mFile;
    Bytes mPacked;
};

}  // namespace

void packFrame(const AVFrame& frame, Bytes& out) {
    if (frame.nb_samples > 0)
        packSamples(frame, out);
    else
        packPicture(frame, out);
}

FrameHash::FrameHash() : mSha(av_sha_alloc(), av_free) {
    if (!mSha || av_sha_init(mSha.get(), 160) < 0) throw std::bad_alloc();
}

FrameHash::~FrameHash() = default;

void FrameHash::take(const AVFrame& frame) {
    packFrame(frame, mPacked);
    av_sha_update(mSha.get(), mPacked.data(), mPacked.size());
}

std::string FrameHash::hex() {
    uint8_t digest[20];
    av_sha_final(mSha.get(), digest);
    return fmt::format("{:02x}", fmt::join(digest, ""));
}

std::unique_ptr<FrameSink> makePictureFile(const std::string& path, int64_t timeUs) {
    return std::make_unique<PictureFile>(path, timeUs);
}

std::unique_ptr<FrameSink> makeSoundFile(const std::string& path) {
    return std::make_unique<SoundFile>(path);
}

}  // namespace mkvx
