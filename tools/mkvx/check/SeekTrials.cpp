#include "check/SeekTrials.h"

#include <fmt/format.h>
#include <algorithm>

#include "base/Interrupt.h"
#include "base/Text.h"
#include "check/Remedy.h"
#include "device/TrackReader.h"
#include "source/BenchSource.h"

namespace mkvx {
namespace {

constexpr size_t kMostTracks = 8;
constexpr size_t kMostTargets = 48;
constexpr uint64_t kMostReads = 4u << 20;  // of all seeks; a hostile file makes each of them long

std::vector<int64_t> targetsOf(const IndexReport& index) {
    std::vector<int64_t> all = {1, index.durationUs - 1};
    for (size_t i = 0; i < index.entries.size(); ++i) {
        const int64_t from = index.entries[i].timeUs;
        const int64_t to = i + 1 < index.entries.size() ? index.entries[i + 1].timeUs : index.durationUs;
        all.push_back(from);
        if (from >= 0 && to > from) all.push_back(from + (to - from) / 2);
    }
    const auto isOutside = [&](int64_t us) { return us <= 0 || us >= index.durationUs; };
    all.erase(std::remove_if(all.begin(), all.end(), isOutside), all.end());
    std::sort(all.begin(), all.end());
    all.erase(std::unique(all.begin(), all.end()), all.end());
    if (all.size() <= kMostTargets) return all;
    std::vector<int64_t> thinned;
    for (size_t i = 0; i < kMostTargets; ++i)
        thinned.push_back(all[i * (all.size() - 1) / (kMostTargets - 1)]);
    return thinned;
}

bool readsUnit(android::MediaSource& source, const android::MediaSource::ReadOptions* options) {
    android::MediaBuffer* buffer = nullptr;
    const bool isOk = source.read(&buffer, options) == android::OK;
    const BufferPtr owned(buffer);
    return isOk && buffer != nullptr;
}

class Trials {
  public:
    explicit Trials(const Session& session)
        : mBytes(new CountingSource(session.newBytes())),
          mExtractor(session.plugin().open(mBytes, nullptr)),
          mTargets(targetsOf(session.reader().index())) {}

    void run(const std::string& path, TrackVerdict& track) {
        const android::sp<android::MediaSource> source =
            mExtractor != nullptr ? mExtractor->getTrack(*track.index) : nullptr;
        if (source == nullptr || source->start() != android::OK) return;
        size_t tried = 0, ended = 0;
        std::optional<int64_t> first;
        bool isUnreadable = false;  // what the first of them lands on
        for (const int64_t target : mTargets) {
            if (mBytes->reads() > kMostReads || wasInterrupted()) break;
            android::MediaSource::ReadOptions to;
            to.setSeekTo(target);
            ++tried;
            if (readsUnit(*source, &to) || ended++ > 0) continue;
            first = target;
            isUnreadable = readsUnit(*source, nullptr);
        }
        source->stop();
        if (first) tell(path, track, {tried, ended}, *first, isUnreadable);
    }

  private:
    struct Count {
        size_t tried, ended;
    };

    static void tell(const std::string& path, TrackVerdict& track, Count count, int64_t first,
                     bool isUnreadable) {
        const char* reason = isUnreadable ? "it lands on a unit that cannot be read"
                                          : "no Cluster that is searched for it holds a key frame of this "
                                            "track, and none of its units lies behind them";
        track.findings.push_back({"seeks_end", Weight::kLoss,
                                  fmt::format("{} of {} seeks tried end the stream, the first one to {}: {}",
                                              count.ended, count.tried, clockTime(first), reason),
                                  std::nullopt, remuxCommand(path)});
    }

    const android::sp<CountingSource> mBytes;
    const android::sp<android::MediaExtractor> mExtractor;
    const std::vector<int64_t> mTargets;
};

}  // namespace

void trySeeks(const Session& session, CheckedFile& checked) {
    Trials trials(session);
    size_t tracks = 0;
    for (TrackVerdict& track : checked.tracks)
        if (track.isOffered() && track.kind != "subtitle" && track.counts->units > 0 &&
            tracks++ < kMostTracks)
            trials.run(checked.path, track);
}

}  // namespace mkvx
