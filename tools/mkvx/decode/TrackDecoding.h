// One track on its way through a decoder.
#pragma once
#include <media/stagefright/MediaBuffer.h>
#include <media/stagefright/MediaSource.h>

#include "decode/DecoderProcess.h"
#include "decode/Model.h"
#include "device/Model.h"
#include "device/UnitProgress.h"

namespace mkvx {

// By the program of that name, from the track's first unit on, at most as many frames as the setup says. The
// decoder's output lies ready until closeOutput() completes it. One thread; `progress` has to outlive this.
// Throws what DecoderProcess throws.
class TrackDecoding {
  public:
    TrackDecoding(const TrackInfo& track, const android::sp<android::MediaSource>& source,
                  const std::string& program, const TrackSetup& setup, UnitProgress& progress);

    // Once.
    DecodedTrack run();
    bool hasOutput() const { return state().hasOutput; }
    void closeOutput() { mDecoder.closeOutput(); }

  private:
    const TrackState& state() const { return mDecoder.state(); }
    void feedAll();
    void feed(android::MediaBuffer& buffer);
    void takeState();

    uint64_t mMostFrames;
    android::sp<android::MediaSource> mSource;
    UnitProgress& mProgress;
    DecoderProcess mDecoder;
    DecodedTrack mResult;
};

}  // namespace mkvx
