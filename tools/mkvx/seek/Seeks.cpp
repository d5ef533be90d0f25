#include "seek/Seeks.h"

#include <fmt/format.h>
#include <optional>

#include "base/Interrupt.h"
#include "base/Terminal.h"
#include "seek/Landing.h"

namespace mkvx {
namespace {

Landing seekTo(LandingProbe& probe, int64_t timeUs) {
    android::MediaSource::ReadOptions to;
    to.setSeekTo(timeUs);
    return probe.read(&to);
}

// A track has an opening of its own, unless that would cost more than this for all tracks: then they share
// one, and a seek may find headers known that another track's seek has read.
constexpr uint64_t kMostOpeningWork = 1 << 19;

class Openings {
  public:
    explicit Openings(const Session& session) : mSession(session) {}

    // For the next track.
    const CountedOpening& next() {
        const size_t tracks = mSession.info().tracks.size();
        if (!mOpening || mOpening->work * tracks <= kMostOpeningWork) mOpening.emplace(mSession);
        return *mOpening;
    }

  private:
    const Session& mSession;
    std::optional<CountedOpening> mOpening;
};

uint64_t seekTrack(LandingProbe& probe, const TrackInfo& track, const std::vector<int64_t>& timesUs,
                   Listing<SeekProbe>& out) {
    uint64_t written = 0;
    for (const int64_t timeUs : timesUs) {
        const Landing landing = seekTo(probe, timeUs);
        if (wasInterrupted()) break;
        out.write({track.index, timeUs, landing});
        ++written;
    }
    return written;
}

}  // namespace

uint64_t seekTracks(const Session& session, const TrackInfo* only, const std::vector<int64_t>& timesUs,
                    Listing<SeekProbe>& out) {
    uint64_t written = 0;
    Openings openings(session);
    untilInterrupted([&] {
        for (const TrackInfo& track : session.info().tracks) {
            const bool isSubtitle = track.kind == TrackKind::kSubtitle;
            if (wasInterrupted() || (only != nullptr ? only != &track : isSubtitle)) continue;
            if (isSubtitle)
                tell(fmt::format("{}: index {}: subtitles follow the seeks of the master track",
                                 session.info().path, track.index));
            LandingProbe probe(openings.next(), session, track);
            written += seekTrack(probe, track, timesUs, out);
        }
    });
    return written;
}

}  // namespace mkvx
