#include "seek/Index.h"

#include <algorithm>

#include "base/Log.h"
#include "matroska/MatroskaExtExtractor.h"

namespace mkvx {
namespace {

using MatroskaExtReader::CMatroskaFile;
using MatroskaExtReader::Cue;
using MatroskaExtReader::CuePoint;

bool names(const Cue& cue, const CuePoint& point, uint64_t track) {
    for (uint32_t i = 0; i < point.PositionCount; ++i)
        if (cue.PositionsOf(point)[i].CueTrack == track) return true;
    return false;
}

void countPoints(const CMatroskaFile& file, IndexReport& report) {
    for (const auto& cue : file.Segment.Cues) {
        report.source = cue->IsSynthesised ? "scan" : "cues";
        report.points += cue->Points.size();
        for (const CuePoint& point : cue->Points)
            report.masterPoints += names(*cue, point, file.MasterTrack()) ? 1 : 0;
    }
}

}  // namespace

IndexReport readIndex(const android::sp<android::DataSource>& source) {
    MuteLog mute;
    const android::sp<android::MatroskaExtExtractor> extractor = new android::MatroskaExtExtractor(source);
    IndexReport report = readIndex(*extractor);
    report.isStreamed = (source->flags() & android::DataSource::kIsCachingDataSource) != 0;
    return report;
}

IndexReport readIndex(android::MatroskaExtExtractor& extractor) {
    const CMatroskaFile& file = *extractor.File();
    IndexReport report;
    report.source = "none";
    report.durationUs = int64_t(file.Segment.GetDuration() / 1000);
    report.masterTrack = file.MasterTrack();
    countPoints(file, report);
    for (const auto& item : file.Index()) report.entries.push_back({item.Time, item.Position});
    return report;
}

std::vector<IndexGap> gapsOf(const IndexReport& report, int64_t limitUs) {
    std::vector<IndexGap> gaps;
    int64_t last = 0;
    const auto reach = [&](int64_t timeUs) {
        if (timeUs > last && timeUs - last > limitUs) gaps.push_back({last, timeUs});
        last = std::max(last, timeUs);
    };
    for (const IndexEntry& entry : report.entries) reach(entry.timeUs);
    reach(report.durationUs);
    return gaps;
}

}  // namespace mkvx
