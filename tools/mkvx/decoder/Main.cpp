// mkvx-decode: the decoders of mkvx decode, in a program of their own. Reads what Protocol.h describes from
// standard input and answers on standard output.
#include <memory>
#include <optional>

extern "C" {
#include <libavutil/frame.h>
}

#include "decode/Serve.h"
#include "decoder/Engine.h"
#include "decoder/Output.h"
#include "decoder/Setup.h"

namespace mkvx {
namespace {

std::unique_ptr<FrameSink> outputFor(const TrackSetup& setup) {
    if (!setup.picturePath.empty()) return makePictureFile(setup.picturePath, setup.pictureTimeUs);
    if (!setup.soundPath.empty()) return makeSoundFile(setup.soundPath);
    return nullptr;
}

// The one track of a conversation.
class TrackDecoding : public ServedTrack {
  public:
    explicit TrackDecoding(const TrackSetup& setup)
        : mMostFrames(setup.mostFrames), mOutput(outputFor(setup)) {
        orProblem([&] {
            mDecoder.emplace(decoderSetup(setup), [this](const AVFrame& frame) { take(frame); });
            mState.decoder = mDecoder->name();
        });
    }

    void feed(const UnitHead& unit, const uint8_t* data, size_t size) override {
        orProblem([&] { mDecoder->feed(data, size, unit.timeUs, unit.isSync); });
    }

    void end(bool givesOutRest) override {
        orProblem([&] {
            if (givesOutRest) mDecoder->finish();
        });
        if (!mState.isOver) mState.sha1 = mHash.hex();
    }

    void closeOutput() override {
        if (mOutput) mOutput->finish();
    }

    const TrackState& state() override {
        mState.hasOutput = mOutput && mOutput->hasFrames();
        if (mState.isOver || !mDecoder) return mState;
        mState.errors = mDecoder->errors();
        mState.problem = mDecoder->firstError();
        return mState;
    }

  private:
    // A problem ends the track; what comes after it is let pass.
    template <typename Work>
    void orProblem(const Work& work) {
        if (mState.isOver) return;
        try {
            work();
        } catch (const DecodeProblem& problem) {
            mState.problem = problem.what();
            mState.isOver = true;
        }
    }

    void take(const AVFrame& frame) {
        if (mState.frames >= mMostFrames) return;
        ++mState.frames;
        mState.samples += uint64_t(frame.nb_samples);
        mHash.take(frame);
        if (mOutput) mOutput->take(frame);
    }

    uint64_t mMostFrames;
    std::unique_ptr<FrameSink> mOutput;
    FrameHash mHash;
    TrackState mState;
    std::optional<Decoder> mDecoder;
};

}  // namespace
}  // namespace mkvx

int main() {
    return mkvx::serveTrack("mkvx-decode", [](const mkvx::TrackSetup& setup) {
        return std::make_unique<mkvx::TrackDecoding>(setup);
    });
}
