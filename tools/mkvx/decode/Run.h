// Decoding the tracks of a file, one behind the other, and writing what one of them gives.
#pragma once
#include <cstdint>
#include <limits>
#include <memory>
#include <string>

#include "base/Progress.h"
#include "decode/Model.h"
#include "decode/TrackDecoding.h"
#include "device/Session.h"

namespace mkvx {

enum class AacChoice {
    kDevice,  // the library that devices use
    kFfmpeg,
};

struct DecodeOptions {
    AacChoice aac = AacChoice::kDevice;                      // for AAC tracks; libavcodec has the others
    uint64_t frames = std::numeric_limits<uint64_t>::max();  // per track
    std::string output;                                      // PNG or WAV; empty: none
    ProgressStyle progress = ProgressStyle::kLine;
};

// Of `only`, or of all video and audio tracks where that is null. The arguments have to outlive it. One
// thread.
class DecodeRun {
  public:
    // Throws FileFailure where an output is asked for and there is no track for it.
    DecodeRun(const Session& session, const TrackInfo* only, const DecodeOptions& options);

    // Once. An interruption ends it.
    const DecodedFile& run();
    // The output's file is completed after the results are told. After an interruption only where there is
    // something to write.
    void completeOutput();

  private:
    bool isWanted(const TrackInfo& track) const;
    void decode(const TrackInfo& track);

    const Session& mSession;
    const TrackInfo* const mOnly;
    const DecodeOptions& mOptions;
    const TrackInfo* const mToOutput;  // the track that gives it; null for none
    UnitProgress mProgress;
    DecodedFile mDecoded;
    std::unique_ptr<TrackDecoding> mOutput;
};

}  // namespace mkvx
