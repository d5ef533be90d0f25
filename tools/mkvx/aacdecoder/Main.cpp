// mkvx-decode-aac: the AAC decoder library that devices use, for mkvx decode. Reads what decode/Protocol.h
// describes from standard input and answers on standard output.
#include <fmt/format.h>
#include <memory>

#include "base/Digest.h"
#include "base/WaveFile.h"
#include "decode/Serve.h"
#include "device/AacDecoder.h"
#include "device/CodecRecords.h"

namespace mkvx {
namespace {

class AacTrack : public ServedTrack {
  public:
    explicit AacTrack(const TrackSetup& setup) : mMostFrames(setup.mostFrames) {
        if (!setup.soundPath.empty()) mFile = std::make_unique<WaveFile>(setup.soundPath);
        mHash.begin();
        const Bytes config = specificInfo(setup.esds);
        const std::string refusal = mDecoder.configure(config);
        if (!refusal.empty())
            giveUp("refuses the configuration, " + refusal);
        else
            mState.decoder = kName;
    }

    void feed(const UnitHead&, const uint8_t* data, size_t size) override {
        if (mState.isOver) return;
        AacDecoder::Sound sound;
        const std::string error = mDecoder.decode(data, size, sound);
        if (!error.empty()) return count(error);
        if (mState.frames >= mMostFrames) return;
        ++mState.frames;
        mState.samples += sound.frames;
        write(sound);
    }

    void end(bool) override {
        if (!mState.isOver) mState.sha1 = mHash.end();
    }

    void closeOutput() override {
        if (mFile) mFile->close();
    }

    const TrackState& state() override {
        mState.hasOutput = mFile && mFile->hasSamples();
        return mState;
    }

  private:
    static constexpr char kName[] = "libfdk-aac";
    static constexpr uint32_t kBits = 16;

    void giveUp(const std::string& why) {
        mState.problem = fmt::format("the decoder {} {}", kName, why);
        mState.isOver = true;
    }

    void count(const std::string& error) {
        ++mState.errors;
        if (mState.problem.empty()) mState.problem = error;
    }

    void write(const AacDecoder::Sound& sound) {
        const size_t size = sound.frames * sound.channels * sizeof *sound.samples;
        mHash.add(sound.samples, size);
        if (mFile) mFile->write({false, kBits, sound.rate, sound.channels}, sound.samples, size);
    }

    const uint64_t mMostFrames;
    std::unique_ptr<WaveFile> mFile;
    AacDecoder mDecoder;
    Sha1 mHash;
    TrackState mState;
};

}  // namespace
}  // namespace mkvx

int main() {
    return mkvx::serveTrack("mkvx-decode-aac", [](const mkvx::TrackSetup& setup) {
        return std::make_unique<mkvx::AacTrack>(setup);
    });
}
