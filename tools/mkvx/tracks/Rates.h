// What each track takes, found by a pass over the headers of all blocks. One thread.
#pragma once
#include <media/stagefright/DataSource.h>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>

namespace mkvx {

// The blocks of one track. Bytes are those of the frames as the file stores them, block headers apart.
struct TrackRate {
    uint64_t bytes = 0, frames = 0;
    int64_t firstUs = 0, lastUs = 0;  // smallest and largest time of a block
    int64_t endUs = 0;                // of the block that ends last, where durations tell

    // Per second, from the first block's time to the end of the last; where no duration tells that end, the
    // last frame counts as long as the others are on average. Nothing for a single frame without a duration.
    std::optional<double> bitRate() const;
    std::optional<double> frameRate() const;

  private:
    std::optional<double> seconds() const;
};

// By TrackNumber. `frameNs`: DefaultDuration of tracks that have one. `reached` hears how far in the file the
// pass has come.
std::map<uint64_t, TrackRate> readRates(const android::sp<android::DataSource>& source,
                                        const std::map<uint64_t, uint64_t>& frameNs,
                                        const std::function<void(uint64_t position)>& reached);

}  // namespace mkvx
