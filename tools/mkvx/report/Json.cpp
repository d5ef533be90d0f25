#include <fmt/format.h>
#include <algorithm>

#include "base/Json.h"
#include "base/Text.h"
#include "report/Page.h"

namespace mkvx {
namespace {

// What a script's numbers hold exactly. Times and positions beyond it are drawn at its edge.
constexpr int64_t kMostNumber = int64_t(1) << 53;

int64_t number(int64_t value) {
    return std::clamp(value, -kMostNumber, kMostNumber);
}
int64_t number(uint64_t value) {
    return int64_t(std::min(value, uint64_t(kMostNumber)));
}

template <typename T>
void set(Json& object, const char* name, const std::optional<T>& value) {
    if (value) object[name] = number(int64_t(*value));
}

// A column of numbers, each as its distance from the one before: shorter, and the page adds them up.
class Steps {
  public:
    void add(int64_t value) {
        mJson.push_back(value - mLast);
        mLast = value;
    }
    Json take() { return std::move(mJson); }

  private:
    Json mJson = Json::array();
    int64_t mLast = 0;
};

template <typename T>
Json thinnedJson(const Thinned<T>& list) {
    Steps times, positions;
    for (const T& item : list.kept()) {
        times.add(number(item.timeUs));
        positions.add(number(item.position));
    }
    return {{"count", list.count()}, {"stride", list.stride()}, {"t", times.take()}, {"p", positions.take()}};
}

Json unitsJson(const Thinned<UnitPoint>& list) {
    Json object = thinnedJson(list);
    object["size"] = Json::array();
    for (const UnitPoint& unit : list.kept()) object["size"].push_back(number(unit.size));
    return object;
}

Json clustersJson(const Thinned<ClusterMark>& list) {
    Json object = thinnedJson(list);
    object["size"] = object["blocks"] = Json::array();
    for (const ClusterMark& cluster : list.kept()) {
        object["size"].push_back(number(cluster.size));
        object["blocks"].push_back(number(cluster.blocks));
    }
    return object;
}

Json rateJson(const RateBuckets& rate) {
    Json bytes = Json::array(), units = Json::array(), keys = Json::array();
    for (const RateBucket& bucket : rate.buckets()) {
        bytes.push_back(number(bucket.bytes));
        units.push_back(bucket.units);
        keys.push_back(bucket.keys);
    }
    return {{"width_us", number(rate.widthUs())}, {"bytes", bytes}, {"units", units}, {"keys", keys}};
}

Json timelineJson(const TrackTimeline& line) {
    Json object;
    object["track"] = line.index;
    object["delivered"] = line.isDelivered;
    object["bytes"] = number(line.bytes);
    set(object, "first_us", line.firstUs);
    set(object, "last_us", line.lastUs);
    set(object, "longest_key_gap_us", line.longestKeyGapUs);
    object["unreadable"] = line.unreadable;
    set(object, "stops_after_us", line.stopsAfterUs);
    object["rate"] = rateJson(line.rate);
    object["keys"] = unitsJson(line.keys);
    object["others"] = unitsJson(line.others);
    object["cues"] = thinnedJson(line.cues);
    return object;
}

void addFormat(Json& object, const TrackInfo& info) {
    set(object, "width", info.width);
    set(object, "height", info.height);
    set(object, "sample_rate", info.sampleRate);
    set(object, "channels", info.channels);
}

Json trackJson(const TrackVerdict& track, const FileInfo& info) {
    Json object;
    object["kind"] = track.kind;
    object["index"] = *track.index;
    object["mime"] = shortText(track.mime);
    if (*track.index < info.tracks.size()) addFormat(object, info.tracks[*track.index]);
    return object;
}

Json tracksJson(const ReportPage& page) {
    Json list = Json::array();
    for (const TrackVerdict& track : page.checked.tracks) {
        if (list.size() == ReportPage::kMostRows) break;
        if (track.index) list.push_back(trackJson(track, page.info));
    }
    return list;
}

Json layoutJson(const FileLayout& layout) {
    Json object, regions = Json::array();
    for (const Region& region : layout.regions)
        regions.push_back({region.name, number(region.begin), number(region.end), region.elements});
    object["regions"] = regions;
    object["cut"] = layout.isCut;
    object["clusters"] = clustersJson(layout.clusters);
    return object;
}

Json indexJson(const ReportPage& page) {
    Json object = thinnedJson(page.indexEntries);
    object["source"] = page.index.source;
    object["master_track"] = page.index.masterTrack;
    object["points"] = page.index.points;
    object["master_points"] = page.index.masterPoints;
    object["coarse"] = Json::array();
    for (const IndexGap& gap : page.coarse)
        if (object["coarse"].size() < ReportPage::kMostRows)
            object["coarse"].push_back({number(gap.fromUs), number(gap.toUs)});
    object["coarse_count"] = page.coarse.size();
    return object;
}

Json seekJson(const SeekProbe& seek) {
    Json object;
    object["track"] = seek.track;
    object["target_us"] = number(seek.targetUs);
    object["reads"] = seek.landing.reads;
    object["read_bytes"] = number(seek.landing.readBytes);
    object["ranges"] = Json::array();
    for (const ByteRange& range : seek.landing.ranges)
        object["ranges"].push_back({number(range.begin), number(range.end)});
    if (!seek.landing.unit) return object;
    object["landed_us"] = number(seek.landing.unit->timeUs);
    object["sync"] = seek.landing.unit->sync;
    object["size"] = number(uint64_t(seek.landing.unit->size));
    object["position"] = number(seek.landing.position);
    return object;
}

Json chapterJson(const Chapter& chapter, size_t edition, size_t depth) {
    const ChapterTitle title = chapter.titles.empty() ? ChapterTitle() : chapter.titles.front();
    Json object;
    object["edition"] = edition;
    object["depth"] = depth;
    object["title"] = shortText(title.text);
    object["language"] = shortText(title.language);
    object["start_us"] = number(chapter.startUs);
    set(object, "end_us", chapter.endUs);
    if (chapter.isHidden) object["hidden"] = true;
    if (!chapter.isEnabled) object["disabled"] = true;
    return object;
}

// Chapters in one list, each behind the one that it is part of. Returns how many there are; the list holds
// the first of them.
uint64_t addChapters(const std::vector<Chapter>& chapters, size_t edition, size_t depth, Json& list) {
    uint64_t count = chapters.size();
    for (const Chapter& chapter : chapters) {
        if (list.size() < ReportPage::kMostRows) list.push_back(chapterJson(chapter, edition, depth));
        count += addChapters(chapter.nested, edition, depth + 1, list);
    }
    return count;
}

void addLists(Json& object, const ReportPage& page) {
    object["seeks"] = object["chapters"] = object["losses"] = Json::array();
    for (const SeekProbe& seek : page.seeks) object["seeks"].push_back(seekJson(seek));
    uint64_t chapters = 0;
    for (size_t i = 0; i < page.chapters.editions.size(); ++i)
        chapters += addChapters(page.chapters.editions[i], i, 0, object["chapters"]);
    for (const LossRow& row : page.losses)
        object["losses"].push_back({row.what, number(row.position), number(row.size)});
    object["chapter_count"] = chapters;
}

}  // namespace

std::string shortText(const std::string& text) {
    constexpr size_t kMostBytes = 400;
    if (text.size() <= kMostBytes) return printable(text);
    size_t end = kMostBytes;
    while (end > kMostBytes - 4 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
    return printable(std::string_view(text).substr(0, end)) + " \xE2\x80\xA6";
}

std::string reportJson(const ReportPage& page) {
    Json object = newResult();
    object["size"] = number(page.checked.size);
    object["duration_us"] = number(page.durationUs);
    object["offered_count"] = page.info.tracks.size();
    object["tracks"] = tracksJson(page);
    object["timelines"] = Json::array();
    for (const TrackTimeline& line : page.timelines) object["timelines"].push_back(timelineJson(line));
    object["layout"] = layoutJson(page.layout);
    object["index"] = indexJson(page);
    addLists(object, page);
    return object.dump(-1, ' ', true, Json::error_handler_t::replace);
}

}  // namespace mkvx
