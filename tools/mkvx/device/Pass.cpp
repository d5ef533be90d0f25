#include "device/Pass.h"

#include <fmt/format.h>

#include "base/Failure.h"

namespace mkvx {
namespace {

const TrackInfo& masterOf(const Session& session, const TrackInfo& track) {
    if (const TrackInfo* master = session.masterTrack()) return *master;
    throw FileFailure(
        session.info().path,
        fmt::format("index {}: no subtitle can arrive, since the master track (track number {}) has "
                    "no source (mkvx check says why)",
                    track.index, session.reader().head().masterTrack()));
}

}  // namespace

size_t passOver(const Session& session, const TrackInfo& track,
                const std::function<void(const PassedUnit&)>& take) {
    const bool isSubtitle = track.kind == TrackKind::kSubtitle;
    const TrackInfo& read = isSubtitle ? masterOf(session, track) : track;
    const android::sp<android::MediaExtractor> extractor = session.newExtractor();
    TrackReader reader(extractor->getTrack(read.index), session.reader().cursor(read.number));
    if (!isSubtitle) {
        while (const BufferPtr buffer = reader.next())
            take({*buffer, reader.position(), reader.unreadable()});
        return reader.unreadable();
    }
    TrackReader subtitles(extractor->getTrack(track.index));
    for (bool more = true; more;) {
        more = reader.next() != nullptr;
        while (const BufferPtr buffer = subtitles.next()) take({*buffer, 0, 0});
    }
    return 0;
}

}  // namespace mkvx
