#include "tracks/Rates.h"

#include <algorithm>
#include <numeric>

#include "base/Log.h"
#include "device/ElementWalk.h"

namespace mkvx {
namespace {

class RateWalk {
  public:
    RateWalk(const android::sp<android::DataSource>& source, const std::map<uint64_t, uint64_t>& frameNs)
        : mWalk(source), mFrameNs(frameNs) {}

    std::map<uint64_t, TrackRate> run(const std::function<void(uint64_t)>& reached) {
        while (const std::optional<WalkItem> item = mWalk.next()) {  // bounded by the walk
            const auto* element = std::get_if<Element>(&item->what);
            if (element == nullptr) continue;
            take(item->depth, *element);
            reached(element->offset);
        }
        return std::move(mRates);
    }

  private:
    void take(unsigned depth, Element element) {
        const bool isWay = (depth == 0 && element.id == id::kSegment) ||
                           (depth == 1 && (element.id == id::kCluster || element.id == id::kInfo)) ||
                           (depth == 2 && element.id == id::kBlockGroup);
        if (!isWay) mWalk.skipChildren();
        const bool isBlock =
            (depth == 2 && element.id == id::kSimpleBlock) || (depth == 3 && element.id == id::kBlock);
        const bool isDuration = depth == 3 && element.id == id::kBlockDuration;
        if (depth == 2) mLast = nullptr;
        if (!isBlock && !isDuration) return;
        mWalk.readValue(element);
        if (const auto* block = std::get_if<BlockValue>(&element.value)) return takeBlock(element, *block);
        const auto* units = std::get_if<uint64_t>(&element.value);
        if (mLast != nullptr && units != nullptr) endAt(unitsToUs(*units, mWalk.context().scale));
    }

    void takeBlock(const Element& element, const BlockValue& block) {
        if (!block.timeUs || element.payloadEnd > mWalk.end()) return;  // its bytes are not all there
        if (mRates.size() >= ElementWalk::kMostTracks && mRates.count(block.track) == 0) return;
        const auto [entry, isNew] = mRates.try_emplace(block.track);
        TrackRate& rate = entry->second;
        const uint64_t framed = std::accumulate(block.frames.begin(), block.frames.end(), uint64_t{0});
        // Of frames that cannot be told apart the block is one.
        rate.bytes += block.frames.empty() ? element.size : framed;
        rate.frames += std::max<size_t>(block.frames.size(), 1);
        rate.firstUs = isNew ? *block.timeUs : std::min(rate.firstUs, *block.timeUs);
        rate.lastUs = isNew ? *block.timeUs : std::max(rate.lastUs, *block.timeUs);
        mLast = &rate;
        mLastUs = *block.timeUs;
        const auto declared = mFrameNs.find(block.track);
        if (declared != mFrameNs.end())
            endAt(unitsToUs(__int128(declared->second) * int64_t(block.frames.size()), 1));
    }

    void endAt(std::optional<int64_t> durationUs) {
        int64_t end = 0;
        if (durationUs && !__builtin_add_overflow(mLastUs, *durationUs, &end))
            mLast->endUs = std::max(mLast->endUs, end);
    }

    ElementWalk mWalk;
    const std::map<uint64_t, uint64_t>& mFrameNs;
    std::map<uint64_t, TrackRate> mRates;
    TrackRate* mLast = nullptr;  // of the block that the walk is in
    int64_t mLastUs = 0;
};

}  // namespace

std::optional<double> TrackRate::seconds() const {
    const double first = double(firstUs), last = double(lastUs);
    if (endUs > lastUs) return (double(endUs) - first) / 1e6;
    if (frames < 2 || last <= first) return std::nullopt;
    return (last - first) * double(frames) / double(frames - 1) / 1e6;
}

std::optional<double> TrackRate::bitRate() const {
    const std::optional<double> span = seconds();
    return span ? std::optional<double>(double(bytes) * 8 / *span) : std::nullopt;
}

std::optional<double> TrackRate::frameRate() const {
    const std::optional<double> span = seconds();
    return span ? std::optional<double>(double(frames) / *span) : std::nullopt;
}

std::map<uint64_t, TrackRate> readRates(const android::sp<android::DataSource>& source,
                                        const std::map<uint64_t, uint64_t>& frameNs,
                                        const std::function<void(uint64_t position)>& reached) {
    MuteLog mute;
    return RateWalk(source, frameNs).run(reached);
}

}  // namespace mkvx
