#include <algorithm>

#include "device/Pass.h"
#include "report/Collect.h"

namespace mkvx {
namespace {

class Collector {
  public:
    Collector(TrackTimeline& line) : mLine(line) {}

    void take(const TrackInfo& track, const PassedUnit& passed) {
        const Unit unit = describeUnit(track, passed.buffer);
        if (passed.unreadableSoFar > 0 && !mLine.stopsAfterUs) mLine.stopsAfterUs = mLastUs;
        mLastUs = unit.timeUs;
        mLine.firstUs = std::min(mLine.firstUs.value_or(unit.timeUs), unit.timeUs);
        mLine.lastUs = std::max(mLine.lastUs.value_or(unit.timeUs), unit.timeUs);
        mLine.bytes += unit.size;
        mLine.rate.add(unit.timeUs, unit.size, unit.sync);
        const UnitPoint point{unit.timeUs, unit.size, passed.position};
        (unit.sync ? mLine.keys : mLine.others).add(point);
        if (unit.sync) noteKey(unit.timeUs);
    }

    void finish(uint64_t unreadable) {
        if (mLastKeyUs) noteGapTo(*mLine.lastUs);
        mLine.unreadable = unreadable;
        if (unreadable > 0 && !mLine.stopsAfterUs) mLine.stopsAfterUs = mLastUs;
    }

  private:
    void noteKey(int64_t timeUs) {
        if (mLastKeyUs) noteGapTo(timeUs);
        mLastKeyUs = timeUs;
    }

    void noteGapTo(int64_t timeUs) {
        if (timeUs <= *mLastKeyUs) return;
        const auto gap = int64_t(std::min<uint64_t>(uint64_t(timeUs) - uint64_t(*mLastKeyUs), INT64_MAX));
        mLine.longestKeyGapUs = std::max(mLine.longestKeyGapUs.value_or(0), gap);
    }

    TrackTimeline& mLine;
    int64_t mLastUs = 0;
    std::optional<int64_t> mLastKeyUs;
};

bool canArrive(const Session& session, const TrackInfo& track) {
    return track.kind != TrackKind::kSubtitle || session.masterTrack() != nullptr;
}

}  // namespace

TrackTimeline readTimeline(const Session& session, const TrackInfo& track, size_t most,
                           const std::function<void(uint64_t position)>& reached) {
    TrackTimeline line;
    line.index = track.index;
    line.keys = Thinned<UnitPoint>(most);
    line.others = Thinned<UnitPoint>(most);
    line.cues = Thinned<CueMark>(most);
    line.rate = RateBuckets(track.durationUs.value_or(0));
    line.isDelivered = canArrive(session, track);
    if (!line.isDelivered) return line;
    Collector collector(line);
    collector.finish(passOver(session, track, [&](const PassedUnit& passed) {
        collector.take(track, passed);
        reached(passed.position);
    }));
    return line;
}

}  // namespace mkvx
