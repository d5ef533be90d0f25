#include "seek/Seeks.h"

#include <fmt/format.h>

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

uint64_t seekTrack(const Session& session, const TrackInfo& track, const std::vector<int64_t>& timesUs,
                   Listing<SeekProbe>& out) {
    LandingProbe probe(session, track);
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
    untilInterrupted([&] {
        for (const TrackInfo& track : session.info().tracks) {
            const bool isSubtitle = track.kind == TrackKind::kSubtitle;
            if (wasInterrupted() || (only != nullptr ? only != &track : isSubtitle)) continue;
            if (isSubtitle)
                tell(fmt::format("{}: index {}: subtitles follow the seeks of the master track",
                                 session.info().path, track.index));
            written += seekTrack(session, track, timesUs, out);
        }
    });
    return written;
}

}  // namespace mkvx
