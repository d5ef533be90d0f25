// What the units of a track tell of its stream while they are read: its facts, whether a decoder can begin
// with them, and how fast they come.
#pragma once
#include <memory>
#include <string>

#include "check/Tracks.h"
#include "codecs/StreamFacts.h"
#include "device/AacDecoder.h"
#include "device/Model.h"

namespace mkvx {

// Fills in what the configuration tells of the stream. `judged` is an offered track.
void judgeStreamConfig(const FileHead& head, const TrackInfo& track, const JudgedTrack& judged);

class StreamProbe {
  public:
    // The decoder library of devices tries so many units of an AAC track.
    static constexpr uint64_t kMostDecoded = 64;

    StreamProbe(const TrackInfo& track, TrackVerdict& verdict);

    // Each unit as it is delivered.
    void take(const uint8_t* data, size_t size, int64_t timeUs);
    // After the last: completes the verdict's stream and adds findings.
    void finish();

  private:
    void tryDecoding(const uint8_t* data, size_t size);
    void tellFaults();
    void tellRates();

    TrackVerdict& mVerdict;
    std::unique_ptr<AacDecoder> mAac;  // of AAC that it takes the configuration of
    uint64_t mUnits = 0;
    uint64_t mTried = 0;   // whose first bytes were looked at, or that were decoded
    uint64_t mFaulty = 0;  // of them
    std::string mFirstFault;
    int64_t mFirstUs = 0, mLastUs = 0;  // smallest and largest time
};

}  // namespace mkvx
