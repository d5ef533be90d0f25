// One libavcodec decoder, fed with the units that a track's source delivers.
//
// One thread, and one Decoder at work at a time: libavcodec's messages are collected process-wide. The
// library decodes with a single thread of its own, so that results and messages come in the order of the
// units.
#pragma once
#include <functional>
#include <memory>
#include <string>

#include "decoder/Setup.h"

struct AVCodecContext;
struct AVCodecParserContext;
struct AVFrame;
struct AVPacket;

namespace mkvx {

// Calls the library's own function to free each of its objects.
struct FreeAv {
    void operator()(AVCodecContext* context) const;
    void operator()(AVCodecParserContext* parser) const;
    void operator()(AVFrame* frame) const;
    void operator()(AVPacket* packet) const;
};

// "Invalid data found when processing input" and the like.
std::string avErrorText(int code);

class Decoder {
  public:
    // The frame is valid during the call. Its best_effort_timestamp is in microseconds, AV_NOPTS_VALUE when
    // not known.
    using OnFrame = std::function<void(const AVFrame& frame)>;

    // Throws DecodeProblem when the library has no such decoder or the decoder refuses the configuration.
    Decoder(const DecoderSetup& setup, OnFrame onFrame);
    ~Decoder();
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;

    const char* name() const;
    void feed(const void* data, size_t size, int64_t timeUs, bool sync);
    // Gives out the frames that the decoder still holds. Nothing may be fed after it.
    void finish();

    // Feeds, the end included, at which the decoder answered with a failure, complained or gave out a damaged
    // frame.
    size_t errors() const { return mErrors; }
    // What was wrong first; empty when nothing was.
    const std::string& firstError() const { return mFirstError; }

  private:
    void clearStep();
    void noteStep();
    void send(const AVPacket* packet);
    void takeFrames();
    void sendParsed(const uint8_t* data, size_t size);
    void fail(int code) { mFailure = mFailure < 0 ? mFailure : code; }

    std::unique_ptr<AVCodecContext, FreeAv> mContext;
    std::unique_ptr<AVCodecParserContext, FreeAv> mParser;  // null: a unit goes to the decoder as it is
    std::unique_ptr<AVPacket, FreeAv> mPacket;
    std::unique_ptr<AVFrame, FreeAv> mFrame;
    OnFrame mOnFrame;
    size_t mErrors = 0;
    // Of the current feed: its first failure, and whether a frame was damaged.
    int mFailure = 0;
    bool mDamaged = false;
    std::string mFirstError;
};

}  // namespace mkvx
