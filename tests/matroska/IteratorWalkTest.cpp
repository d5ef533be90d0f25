// Seeks in files whose Cues come in any order, number and shape, against a plain walk over all of them.
#include <algorithm>
#include <optional>
#include <random>

#include "matroska/MatroskaFixture.h"

namespace testing_support {
namespace {

constexpr uint64_t kMaster = 1, kOther = 2;
constexpr int64_t kDurationMs = 10000;

struct ModelBlock {
    uint64_t track;
    int16_t offset;  // ms, from the Cluster's timecode
    bool key;
    uint8_t value;  // the payload: tells the block from all others of its file
};
struct ModelCluster {
    int64_t timeMs;
    std::vector<ModelBlock> blocks;
};
struct ModelPosition {
    uint64_t track;
    size_t cluster;
};
struct ModelPoint {
    int64_t timeMs;
    std::vector<ModelPosition> positions;
};
struct Model {
    std::vector<ModelCluster> clusters;
    std::vector<std::vector<ModelPoint>> cues;  // one list per Cues element

    Document Build() const;
    std::string Expected(uint64_t track, int64_t targetUs) const;

  private:
    std::string FirstFrom(size_t cluster, size_t block, uint64_t track) const;
};

std::string LabelOf(size_t cluster) {
    return "cluster " + std::to_string(cluster);
}

Document Model::Build() const {
    Elements children = {Info(static_cast<double>(kDurationMs)),
                         Master(id::kTracks, {Mpeg2Track(kMaster), Mp3Track(kOther)})};
    for (const auto& list : cues) {
        Elements points;
        for (const ModelPoint& point : list) {
            Elements parts = {Uint(id::kCueTime, static_cast<uint64_t>(point.timeMs))};
            for (const ModelPosition& position : point.positions) {
                parts.push_back(Master(id::kCueTrackPositions,
                                       {Uint(id::kCueTrack, position.track),
                                        PositionOf(id::kCueClusterPosition, LabelOf(position.cluster))}));
            }
            points.push_back(Master(id::kCuePoint, parts));
        }
        children.push_back(Master(id::kCues, points));
    }
    for (size_t i = 0; i < clusters.size(); ++i) {
        Elements blocks;
        for (const ModelBlock& block : clusters[i].blocks) {
            blocks.push_back(
                SimpleBlock(block.track, block.offset, block.key ? kKeyFrame : uint8_t{0}, {block.value}));
        }
        children.push_back(Cluster(static_cast<uint64_t>(clusters[i].timeMs), blocks).Label(LabelOf(i)));
    }
    return Write({EbmlHeader(), Segment(children)});
}

std::string UnitText(const ModelCluster& cluster, const ModelBlock& block) {
    return std::to_string((cluster.timeMs + block.offset) * 1000) + "/" + (block.key ? "1" : "0") + ":" +
           ToHex({block.value});
}

std::string Model::FirstFrom(size_t cluster, size_t block, uint64_t track) const {
    for (; cluster < clusters.size(); ++cluster, block = 0) {
        for (; block < clusters[cluster].blocks.size(); ++block) {
            const ModelBlock& candidate = clusters[cluster].blocks[block];
            if (candidate.track == track) return UnitText(clusters[cluster], candidate);
        }
    }
    return "-1011";
}

// Every point of every list, each list backwards, whatever their times.
std::string Model::Expected(uint64_t track, int64_t targetUs) const {
    if (targetUs < 0 || targetUs >= kDurationMs * 1000) return "-1011";
    if (targetUs == 0) return FirstFrom(0, 0, track);
    std::optional<size_t> opened;
    size_t lookedAt = 0;  // blocks of the Cluster opened last
    for (const auto& list : cues) {
        for (auto point = list.rbegin(); point != list.rend(); ++point) {
            if (targetUs < point->timeMs * 1000) continue;
            for (const ModelPosition& position : point->positions) {
                if (position.track != kMaster || position.cluster == opened) continue;
                opened = position.cluster;
                const ModelCluster& cluster = clusters[position.cluster];
                lookedAt = 0;
                for (const ModelBlock& block : cluster.blocks) {
                    ++lookedAt;
                    if (block.track != track) continue;
                    if (block.key) return UnitText(cluster, block);
                    if ((cluster.timeMs + block.offset) * 1000 > targetUs) break;
                }
            }
        }
    }
    const bool stands = opened && !clusters[*opened].blocks.empty();
    return stands ? FirstFrom(*opened, lookedAt, track) : FirstFrom(0, 0, track);
}

class ModelMaker {
  public:
    explicit ModelMaker(uint32_t seed) : mRandom(seed) {}

    Model Make() {
        Model model;
        const int clusters = Below(8) + 1;
        for (int i = 0; i < clusters; ++i) model.clusters.push_back(MakeCluster(i));
        const int lists = Below(3) + 1;
        for (int i = 0; i < lists; ++i) model.cues.push_back(MakeList(model.clusters));
        return model;
    }
    int64_t Target() { return int64_t{Below(11000)} * 1000 - Below(3) * 400; }

  private:
    int Below(int n) { return static_cast<int>(mRandom() % static_cast<uint32_t>(n)); }

    ModelCluster MakeCluster(int i) {
        ModelCluster cluster{1000 * i + 100, {}};
        const int blocks = Below(6);
        for (int b = 0; b < blocks; ++b) {
            cluster.blocks.push_back({Below(3) == 0 ? kOther : kMaster,
                                      static_cast<int16_t>(Below(900) - 100), Below(4) == 0, mNext++});
        }
        return cluster;
    }
    std::vector<ModelPoint> MakeList(const std::vector<ModelCluster>& clusters) {
        std::vector<ModelPoint> points(static_cast<size_t>(Below(7)) + 1);
        for (ModelPoint& point : points) {
            point.timeMs = Below(9000);
            for (int left = Below(3) + 1; left > 0; --left) {
                point.positions.push_back({Below(4) == 0 ? kOther : kMaster,
                                           static_cast<size_t>(Below(static_cast<int>(clusters.size())))});
            }
        }
        if (Below(2) == 0) {
            std::sort(points.begin(), points.end(),
                      [](const ModelPoint& a, const ModelPoint& b) { return a.timeMs < b.timeMs; });
        }
        return points;
    }

    std::mt19937 mRandom;
    uint8_t mNext = 0;
};

TEST(Walk, CuesInAnyOrderGiveWhatAPlainWalkGives) {
    for (uint32_t seed = 1; seed <= 400; ++seed) {
        ModelMaker maker(seed);
        const Model model = maker.Make();
        const sp<MediaExtractor> extractor = Open(model.Build());
        const sp<MediaSource> sources[] = {Started(extractor, 0), Started(extractor, 1)};
        for (int i = 0; i < 20; ++i) {
            const int64_t target = maker.Target();
            for (uint64_t track : {kMaster, kOther}) {
                MediaSource::ReadOptions options;
                options.setSeekTo(target);
                ASSERT_EQ(model.Expected(track, target), ReadOne(sources[track - 1], &options))
                    << "seed " << seed << ", track " << track << ", target " << target;
            }
        }
    }
}

// A long list is searched: what a seek reads does not grow with the number of points in front of its target.
TEST(Walk, ALongListCostsNoMoreReadsThanAShortOne) {
    auto readsOfASeek = [](int points) {
        Model model;
        model.clusters.push_back({0, {{kMaster, 0, true, 0}}});
        model.cues.resize(1);
        for (int i = 0; i < points; ++i) model.cues[0].push_back({9000 * i / points, {{kMaster, 0}}});
        const sp<FaultySource> bytes = new FaultySource(model.Build().bytes);
        const sp<MediaSource> source = Started(Open(sp<android::DataSource>(bytes)), 0);
        const uint64_t before = bytes->Reads();
        MediaSource::ReadOptions options;
        options.setSeekTo(8999000);
        EXPECT_EQ("0/1:00", ReadOne(source, &options));
        return bytes->Reads() - before;
    };
    EXPECT_EQ(readsOfASeek(2000), readsOfASeek(20000));
}

// Times beyond what 64 bits of microseconds hold wrap, and a list that ascends in the file may then descend.
TEST(Walk, WrappedCueTimesAreComparedAsTheyCameOut) {
    const uint64_t scale = uint64_t{1} << 40;  // ns a unit
    Elements points;
    for (uint64_t time : {uint64_t{1}, uint64_t{1} << 24}) {  // the second wraps to 0
        points.push_back(CuePoint(time, 1, time == 1 ? "first" : "second"));
    }
    const Document file =
        Write({EbmlHeader(),
               Segment({Info(1000, scale), Master(id::kTracks, {Mpeg2Track(1)}), Master(id::kCues, points),
                        Cluster(0, {SimpleBlock(1, 0, kKeyFrame, {0x10})}).Label("first"),
                        Cluster(0, {SimpleBlock(1, 0, kKeyFrame, {0x20})}).Label("second")})});
    MediaSource::ReadOptions options;
    options.setSeekTo(5);  // in front of the first point, behind the wrapped one
    EXPECT_EQ("0/1:20", ReadOne(Started(Open(file), 0), &options));
}

}  // namespace
}  // namespace testing_support
