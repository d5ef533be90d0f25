// mkvx-decode: the decoders of mkvx decode, in a program of their own. Reads what Protocol.h describes from
// standard input and answers on standard output.
#include <unistd.h>
#include <cstdio>
#include <memory>
#include <optional>

extern "C" {
#include <libavutil/frame.h>
}

#include "base/Failure.h"
#include "decode/Protocol.h"
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
class TrackDecoding {
  public:
    explicit TrackDecoding(const TrackSetup& setup)
        : mMostFrames(setup.mostFrames), mOutput(outputFor(setup)) {
        orProblem([&] {
            mDecoder.emplace(decoderSetup(setup), [this](const AVFrame& frame) { take(frame); });
            mState.decoder = mDecoder->name();
        });
    }

    void feed(const Bytes& body) {
        const UnitHead unit = unitHeadOf(body);
        orProblem([&] {
            mDecoder->feed(body.data() + UnitHead::kSize, body.size() - UnitHead::kSize, unit.timeUs,
                           unit.isSync);
        });
    }

    void end(const Bytes& body) {
        if (body.size() != 1) throw ProtocolError("an End that says something else");
        orProblem([&] {
            if (body[0] != 0) mDecoder->finish();
        });
        if (!mState.isOver) mState.sha1 = mHash.hex();
    }

    void closeOutput() {
        if (mOutput) mOutput->finish();
    }

    const TrackState& state() {
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

class Conversation {
  public:
    void run() {
        for (Message message; readMessage(STDIN_FILENO, message);) {
            obey(message);
            if (!writeMessage(STDOUT_FILENO, MessageKind::kAnswer, toBytes(mTrack->state()))) return;
        }
    }

  private:
    void obey(const Message& message) {
        if ((message.kind == MessageKind::kTrack) == mTrack.has_value())
            throw ProtocolError("one Track has to come first");
        switch (message.kind) {
            case MessageKind::kTrack:
                mTrack.emplace(setupOf(message.body));
                return;
            case MessageKind::kUnit:
                mTrack->feed(message.body);
                return;
            case MessageKind::kEnd:
                mTrack->end(message.body);
                return;
            case MessageKind::kClose:
                mTrack->closeOutput();
                return;
            default:
                throw ProtocolError("a message of no known kind");
        }
    }

    std::optional<TrackDecoding> mTrack;
};

int converse() {
    try {
        Conversation().run();
        return kExitDone;
    } catch (const ProtocolError& error) {
        std::fprintf(stderr, "mkvx-decode: not what mkvx decode says: %s\n", error.what());
        return kExitWrongUsage;
    } catch (const std::exception& error) {
        const std::string sentence = error.what();
        (void)writeMessage(STDOUT_FILENO, MessageKind::kFailure, Bytes(sentence.begin(), sentence.end()));
        return kExitFileUnusable;
    }
}

}  // namespace
}  // namespace mkvx

int main(int argc, char**) {
    if (argc == 1 && ::isatty(STDIN_FILENO) == 0) return mkvx::converse();
    std::fprintf(stderr, "mkvx-decode: is a part of mkvx, started by mkvx decode\n");
    return mkvx::kExitWrongUsage;
}
