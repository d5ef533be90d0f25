// The progress of passes over tracks, told by the times of the units that come: their payload's bytes are
// counted, and a track's duration says what share of the pass is done.
//
// One pass follows the other. One thread.
#pragma once
#include <cstdint>
#include <string>

#include "base/Progress.h"
#include "device/Model.h"

namespace mkvx {

class UnitProgress {
  public:
    UnitProgress(std::string what, ProgressStyle style, size_t passes);

    // The next pass reads this track; 0 for a duration that is not known.
    void beginPass(int64_t durationUs);
    void reach(int64_t timeUs, uint64_t size);
    void reach(const Unit& unit) { reach(unit.timeUs, unit.size); }
    // Before something else is printed to the terminal.
    void hide() { mProgress.hide(); }

  private:
    Progress mProgress;
    ProgressState mState;
    size_t mPasses, mBegun = 0;
    int64_t mDurationUs = 0;
};

}  // namespace mkvx
