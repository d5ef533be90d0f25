// libavformat with its frame parsers off: they would cut and look into frames, which demultiplexing is not.
extern "C" {
#include <libavformat/avformat.h>
}

#include <algorithm>

#include "Peer.h"

namespace bench {
namespace {

constexpr int kIoBuffer = 32 * 1024;

class Avformat : public Peer {
  public:
    explicit Avformat(const Source& source) : mSource(source) {
        mSource->getSize(&mSize);
        mIo = avio_alloc_context(static_cast<unsigned char*>(av_malloc(kIoBuffer)), kIoBuffer, 0, this, &read,
                                 nullptr, &seek);
        mPacket = av_packet_alloc();
    }
    ~Avformat() override {
        av_packet_free(&mPacket);
        avformat_close_input(&mContext);
        av_freep(&mIo->buffer);
        avio_context_free(&mIo);
    }

    bool open(bool forSeeking) override {
        mContext = avformat_alloc_context();
        mContext->pb = mIo;
        mContext->flags |= AVFMT_FLAG_NOPARSE;
        if (avformat_open_input(&mContext, "", nullptr, nullptr) < 0) return false;
        mTrack = av_find_best_stream(mContext, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
        mTrack = std::max(mTrack, 0);
        // The Cues are read at the first seek only.
        if (forSeeking) (void)av_seek_frame(mContext, mTrack, 0, AVSEEK_FLAG_BACKWARD);
        return mContext->nb_streams > 0;
    }

    bool readAll(Sink& sink) override {
        while (av_read_frame(mContext, mPacket) >= 0) deliver(sink);
        return true;
    }

    int64_t durationUs() const override { return mContext->duration; }

    bool seekAndRead(int64_t timeUs, Sink& sink) override {
        const AVRational base = mContext->streams[mTrack]->time_base;
        const int64_t target = av_rescale_q_rnd(timeUs, AV_TIME_BASE_Q, base, AV_ROUND_DOWN);
        if (av_seek_frame(mContext, mTrack, target, AVSEEK_FLAG_BACKWARD) < 0) return false;
        for (;; av_packet_unref(mPacket)) {  // bounded by the file
            if (av_read_frame(mContext, mPacket) < 0) return false;
            if (mPacket->stream_index == mTrack) break;
        }
        deliver(sink);
        return true;
    }

  private:
    static int read(void* self, uint8_t* out, int size) {
        auto* peer = static_cast<Avformat*>(self);
        const ssize_t got = peer->mSource->readAt(peer->mPosition, out, static_cast<size_t>(size));
        if (got <= 0) return AVERROR_EOF;
        peer->mPosition += got;
        return static_cast<int>(got);
    }
    static int64_t seek(void* self, int64_t offset, int whence) {
        auto* peer = static_cast<Avformat*>(self);
        if (whence == AVSEEK_SIZE) return peer->mSize;
        if (whence == SEEK_CUR) offset += peer->mPosition;
        if (whence == SEEK_END) offset += peer->mSize;
        return peer->mPosition = offset;
    }

    void deliver(Sink& sink) {
        const AVRational base = mContext->streams[mPacket->stream_index]->time_base;
        const int64_t timeUs = av_rescale_q(mPacket->pts, base, AV_TIME_BASE_Q);
        sink.take(static_cast<size_t>(mPacket->stream_index), mPacket->data,
                  static_cast<size_t>(mPacket->size), timeUs, (mPacket->flags & AV_PKT_FLAG_KEY) != 0);
        av_packet_unref(mPacket);
    }

    Source mSource;
    off64_t mSize = 0, mPosition = 0;
    AVIOContext* mIo = nullptr;
    AVFormatContext* mContext = nullptr;
    AVPacket* mPacket = nullptr;
    int mTrack = 0;
};

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
    av_log_set_level(AV_LOG_QUIET);
    return bench::peerMain(
        argc, argv, [](const bench::Source& source) { return std::make_unique<bench::Avformat>(source); });
}
