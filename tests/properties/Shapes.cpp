#include "properties/Shapes.h"

#include <iterator>
#include <random>

#include "properties/Readers.h"

namespace testing_support {

namespace {

constexpr int64_t kClusterMs = 1000;
const char kStripped[] = "head";

// How a file differs from one with known sizes, SimpleBlocks without lacing, and a timecode in front.
struct Plan {
    const char* name;
    size_t clusters, blocks, tracks;
    bool hasLaces = false, hasGroups = false, hasEncodings = false;
    bool isLive = false;           // Clusters of unknown size
    bool hasOddTimecodes = false;  // missing, or behind the blocks
    bool hasEmptyClusters = false;
    bool hasOddCues = false;  // several elements, in any order, with several places and other tracks' ones
    bool hasFiller = false;   // Void, other elements and garbage between the blocks
};

const Plan kPlans[] = {
    {"simple blocks", 4, 30, 2},
    {"laces", 4, 30, 3, true},
    {"groups with laces, durations and references", 4, 30, 3, true, true},
    {"zlib, restored headers, Vorbis and subtitles", 4, 40, 6, true, true, true},
    {"live", 12, 20, 3, false, true, false, true},
    {"timecodes missing or behind the blocks", 12, 10, 3, false, true, false, false, true},
    {"Clusters longer than one run of headers", 3, 300, 3, false, true},
    {"live Clusters longer than two runs of headers", 3, 300, 2, false, false, false, true},
    {"exactly one run of headers", 3, 128, 2},
    {"more Clusters than are remembered", 150, 4, 3, false, true},
    {"empty Clusters among others", 40, 3, 2, false, false, false, false, false, true},
    {"many tracks", 30, 200, 24, false, true},
    {"filler and garbage", 8, 20, 3, true, true, false, false, false, false, false, true},
    {"Cues in any order, number and shape", 12, 6, 3, false, true, false, false, false, true, true},
    {"Cues in any order, few key frames", 40, 2, 4, false, true, false, false, true, true, true},
    {"everything at once", 80, 40, 6, true, true, true, true, true, true, true, true},
};

class Builder {
  public:
    explicit Builder(const Plan& plan)
        : mPlan(plan), mRandom(static_cast<uint32_t>(plan.clusters * 1000 + plan.blocks)) {}

    Shape Build() {
        Shape shape;
        shape.name = mPlan.name;
        shape.durationUs = static_cast<int64_t>(mPlan.clusters) * kClusterMs * 1000;
        Elements tracks, clusters, points;
        for (uint32_t i = 0; i < mPlan.tracks; ++i) {
            tracks.push_back(TrackOf(i));
        }
        for (size_t i = 0; i < mPlan.clusters; ++i) {
            clusters.push_back(ClusterAt(i));
            if (mPlan.isLive && i % 5 == 4)
                clusters.push_back(Bin(id::kVoid, Pattern(9, static_cast<uint8_t>(i))));
            if (i % 2 == 0 && !LacksTimecode(i)) points.push_back(CuePoint(i * kClusterMs, 1, LabelOf(i)));
        }
        Elements children = {Info(static_cast<double>(mPlan.clusters) * kClusterMs),
                             Master(id::kTracks, tracks)};
        if (mPlan.hasOddCues) {
            for (size_t left = 1 + Below(3); left > 0; --left) children.push_back(OddCues());
        } else {
            children.push_back(Master(id::kCues, points));
        }
        children.insert(children.end(), clusters.begin(), clusters.end());
        shape.bytes = Write({EbmlHeader(), Segment(children)}).bytes;
        return shape;
    }

  private:
    uint32_t Below(uint32_t limit) { return mRandom() % limit; }
    static std::string LabelOf(size_t cluster) { return "cluster " + std::to_string(cluster); }
    bool LacksTimecode(size_t cluster) const { return mPlan.hasOddTimecodes && cluster % 3 == 1; }

    Element OddCues() {
        Elements points;
        for (uint32_t left = 1 + Below(9); left > 0; --left) {
            Elements parts = {Uint(id::kCueTime, Below(static_cast<uint32_t>(mPlan.clusters * kClusterMs)))};
            for (uint32_t more = Below(4); more > 0; --more) {
                const std::string label = LabelOf(Below(static_cast<uint32_t>(mPlan.clusters)));
                parts.push_back(Master(id::kCueTrackPositions, {Uint(id::kCueTrack, Below(4) == 0 ? 2 : 1),
                                                                PositionOf(id::kCueClusterPosition, label)}));
            }
            points.push_back(Master(id::kCuePoint, parts));
        }
        return Master(id::kCues, points);
    }

    // The later ones need two bytes.
    static uint32_t NumberOf(uint32_t index) { return index < 8 ? index + 1 : 100 + index * 3; }

    Element TrackOf(uint32_t index) const {
        const uint32_t number = NumberOf(index);
        const bool isEncoded = mPlan.hasEncodings;
        if (index == 0) return Track(number, kVideoType, "V_MPEG2", {Video(64, 48)});
        if (isEncoded && index == 2) return EncodedTrack(number, Encoding(0, 0, 0));
        if (isEncoded && index == 3) return EncodedTrack(number, Encoding(0, 0, 3, Text(kStripped)));
        if (isEncoded && index == 4) return Track(number, kAudioType, "A_VORBIS", {Audio(44100, 2)});
        if (isEncoded && index == 5) return Track(number, kSubtitleType, "S_TEXT/UTF8");
        return Track(number, kAudioType, "A_MPEG/L3", {Audio(44100, 2)});
    }
    static Element EncodedTrack(uint32_t number, const Element& encoding) {
        return Track(number, kAudioType, "A_MPEG/L3",
                     {Audio(44100, 2), Master(id::kContentEncodings, {encoding})});
    }

    Element ClusterAt(size_t index) {
        Elements children;
        const size_t blocks = mPlan.hasEmptyClusters && index % 4 == 3 ? 0 : mPlan.blocks;
        for (size_t i = 0; i < blocks; ++i) {
            if (mPlan.hasFiller) AddFiller(&children);
            children.push_back(Block(static_cast<int16_t>(i * kClusterMs / blocks), i == 0));
        }
        const Element timecode = Uint(id::kClusterTimecode, index * kClusterMs);
        if (mPlan.hasOddTimecodes && index % 3 == 2)
            children.push_back(timecode);
        else if (!LacksTimecode(index))
            children.insert(children.begin(), timecode);
        Element cluster = Master(id::kCluster, children);
        if (mPlan.isLive) cluster = cluster.UnknownSize();
        return cluster.Label(LabelOf(index));
    }

    void AddFiller(Elements* children) {
        const Element fillers[] = {Bin(id::kVoid, Pattern(Below(20), 3)), Uint(id::kClusterPrevSize, 17),
                                   Master(id::kBlockGroup, {}),               // without its Block
                                   Bin(id::kSimpleBlock, Hex("8100")),        // ends in its header
                                   Raw(Bytes(mPlan.isLive ? 0 : Below(6)))};  // no header begins so
        const size_t which = Below(16);
        if (which < std::size(fillers)) children->push_back(fillers[which]);
    }

    Element Block(int16_t offset, bool isFirst) {
        const auto index = isFirst ? 0 : Below(static_cast<uint32_t>(mPlan.tracks) + 1);
        const uint32_t number = index == mPlan.tracks ? kUnknownTrack : NumberOf(index);
        const auto lacing = mPlan.hasLaces ? static_cast<Lacing>(Below(4)) : Lacing::kNone;
        const Bytes block = [&] {
            const uint8_t flags = isFirst || Below(3) == 0 ? kKeyFrame : 0;
            return BlockBytes(number, offset, flags, lacing, Frames(index, lacing));
        }();
        if (!mPlan.hasGroups || Below(2) == 0) return Bin(id::kSimpleBlock, block);
        Elements parts = {Bin(id::kBlock, block)};
        if (Below(2) == 0) parts.push_back(Uint(id::kBlockDuration, Below(500)));
        if (!isFirst && Below(2) == 0)
            parts.insert(parts.begin() + Below(2), Int(id::kReferenceBlock, -int64_t{Below(90)} - 1, 2));
        return Master(id::kBlockGroup, parts);
    }

    std::vector<Bytes> Frames(uint32_t trackIndex, Lacing lacing) {
        const size_t count = lacing == Lacing::kNone ? 1 : 1 + Below(6);
        const size_t common = Below(300);
        std::vector<Bytes> frames;
        for (size_t i = 0; i < count; ++i) {
            const bool isEven = lacing == Lacing::kFixed;
            Bytes frame = Pattern(isEven ? common : Below(300), static_cast<uint8_t>(Below(256)));
            if (mPlan.hasEncodings && trackIndex == 2 && !isEven) frame = Zlib(frame);
            frames.push_back(std::move(frame));
        }
        return frames;
    }

    const Plan& mPlan;
    std::mt19937 mRandom;
};

}  // namespace

std::vector<Shape> AllShapes() {
    std::vector<Shape> shapes;
    for (const Plan& plan : kPlans) shapes.push_back(Builder(plan).Build());
    return shapes;
}

}  // namespace testing_support
