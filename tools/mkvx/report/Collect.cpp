#include "report/Collect.h"

#include <algorithm>
#include <tuple>

#include "base/Failure.h"
#include "seek/Landing.h"
#include "seek/Targets.h"
#include "source/OpenSource.h"

namespace mkvx {
namespace {

constexpr size_t kMostUnitsOfPage = 32768;  // key frames and others each, shared out among the tracks
constexpr size_t kFewestUnitsOfTrack = 512;
constexpr size_t kSeeks = 24;  // of each track
constexpr size_t kSoughtTracks = 3;

void readTimelines(const Session& session, Progress& progress, ReportPage& page) {
    const std::vector<TrackInfo>& tracks = session.info().tracks;
    const size_t drawn = std::min(tracks.size(), ReportPage::kMostTimelines);
    const size_t most = std::clamp(kMostUnitsOfPage / std::max<size_t>(drawn, 1), kFewestUnitsOfTrack,
                                   size_t(kMostUnitsOfPage / 2));
    const uint64_t size = page.checked.size;
    for (size_t i = 0; i < drawn; ++i) {
        const auto reached = [&](uint64_t position) {
            ProgressState state;
            state.bytes = i * size + std::min(position, size);
            state.bytesTotal = drawn * size;
            progress.reach(state);
        };
        page.timelines.push_back(readTimeline(session, tracks[i], most, reached));
    }
}

// In the order of jumping about; the page gets them in the order of time.
void seekAbout(const Session& session, const TrackInfo& track, ReportPage& page) {
    LandingProbe probe(session, track);
    for (const int64_t target : seekTargets(kSeeks, page.durationUs)) {
        android::MediaSource::ReadOptions to;
        to.setSeekTo(target);
        page.seeks.push_back({track.index, target, probe.read(&to)});
    }
}

void readSeeks(const Session& session, ReportPage& page) {
    if (page.durationUs <= 0) return;  // every seek would end the stream
    size_t sought = 0;
    for (const TrackInfo& track : session.info().tracks) {
        if (track.kind == TrackKind::kSubtitle || sought == kSoughtTracks) continue;
        seekAbout(session, track, page);
        ++sought;
    }
    std::stable_sort(page.seeks.begin(), page.seeks.end(), [](const SeekProbe& a, const SeekProbe& b) {
        return std::tie(a.track, a.targetUs) < std::tie(b.track, b.targetUs);
    });
}

std::string nameOf(const std::string& path) {
    if (isStandardInput(path)) return "standard input";
    const size_t slash = path.rfind('/');
    return slash == std::string::npos || slash + 1 == path.size() ? path : path.substr(slash + 1);
}

// What stops the examination would stop this process too.
bool canBeRead(const CheckedFile& checked) {
    return checked.verdict != Verdict::kStops && checked.verdict != Verdict::kUndecided;
}

void collect(const Session& session, Progress& progress, ReportPage& page) {
    page.info = session.info();
    readTimelines(session, progress, page);
    page.layout = readLayout(session.newBytes());
    if (page.checked.size == 0 && !page.layout.regions.empty())  // the source does not tell
        page.checked.size = page.layout.regions.back().end;
    readContents(session, page);
    readSeeks(session, page);
    readLosses(session.reader(), page);
    page.isRead = true;
}

}  // namespace

ReportPage collectReport(const ExtractorPlugin& plugin, const CheckedFile& checked,
                         const SourceOptions& source, ProgressStyle style) {
    ReportPage page;
    page.checked = checked;
    page.name = nameOf(checked.path);
    if (!canBeRead(checked)) return page;
    Progress progress(page.name, style);
    try {
        const android::sp<android::DataSource> bytes = openCached(checked.path, source);
        collect(Session(plugin, checked.path, source.faults, bytes), progress, page);
    } catch (const FileFailure&) {
        // Of such a file the verdict says all that there is to say.
        if (checked.verdict == Verdict::kPlays || checked.verdict == Verdict::kPlaysWithLosses) throw;
    }
    return page;
}

}  // namespace mkvx
