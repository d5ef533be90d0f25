#include "seek/Late.h"

#include <fmt/format.h>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "base/Text.h"
#include "seek/Landing.h"

namespace mkvx {
namespace {

// The unit with that index, after the units in front of it were read on time.
Landing readAt(const Session& session, const TrackInfo& track, size_t at, int64_t byUs) {
    LandingProbe probe(session, track);
    for (size_t i = 0; i < at; ++i)
        if (!probe.read(nullptr).unit) {
            throwIfInterrupted(session.info().path);
            throw UsageFailure(fmt::format("{}: index {} has only {} (--at counts them from 0)",
                                           session.info().path, track.index, counted(i, "unit")));
        }
    android::MediaSource::ReadOptions late;
    late.setLateBy(byUs);
    return probe.read(&late);
}

}  // namespace

LateReport readLate(const Session& session, const TrackInfo& track, size_t at, int64_t byUs) {
    LateReport report;
    report.track = track.index;
    report.at = at;
    report.byUs = byUs;
    if (const auto onTime = readAt(session, track, at, 0).unit) report.dueUs = onTime->timeUs;
    report.landing = readAt(session, track, at, byUs);
    throwIfInterrupted(session.info().path);
    return report;
}

}  // namespace mkvx
