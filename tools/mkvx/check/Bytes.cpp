#include "check/Bytes.h"

#include <algorithm>

#include "device/ElementTable.h"
#include "device/ElementWalk.h"

namespace mkvx {
namespace {

constexpr size_t kMostDepth = 16;  // of masters whose children are told apart

class ByteCount {
  public:
    ByteCount(const android::sp<android::DataSource>& source, const std::function<void(uint64_t)>& onBytes)
        : mWalk(source, ElementWalk::Knows::kDocument), mOnBytes(onBytes) {}

    ByteAccount run() {
        while (const std::optional<WalkItem> item = mWalk.next()) {  // bounded by the walk
            const auto* element = std::get_if<Element>(&item->what);
            if (element == nullptr) continue;  // it is what is left over in front of the next element
            leave(item->depth);
            if (item->depth == 0)
                topLevel(*element);
            else
                within(*element);
        }
        leave(0);
        count(mAccount.unreachable, mWalk.end());
        mAccount.extras = mExtras.finish();
        return std::move(mAccount);
    }

  private:
    // Everything from where the count stands up to `end`.
    void count(uint64_t& share, uint64_t end) {
        end = std::min(end, mWalk.end());
        if (end <= mAt) return;
        share += end - mAt;
        if (mOnBytes) mOnBytes(end - mAt);
        mAt = end;
    }

    // What is left over in front of the element at `start`.
    void countGap(uint64_t start) {
        if (start <= mAt) return;
        ++mAccount.damageCount;
        if (mAccount.damages.size() < ByteAccount::kMostKept)
            mAccount.damages.push_back({mAt, std::min(start, mWalk.end()) - mAt});
        count(mAccount.damaged, start);
    }

    // The masters at `depth` and below have ended.
    void leave(size_t depth) {
        for (; mWay.size() > depth; mWay.pop_back()) {
            const Element& master = mWay.back();
            const bool isOpen = master.hasUnknownSize && master.id == id::kCluster;
            if (!isOpen && master.size > 0) countGap(std::min(master.end, mWalk.end()));
        }
    }

    void topLevel(const Element& element) {
        count(mAccount.unreachable, element.offset);
        if (element.id == id::kSegment && mAccount.segments++ == 0) {
            within(element);
            mIsOpenEnded = element.hasUnknownSize;
            if (!mIsOpenEnded) noteMissing(element);
        } else if (element.id == id::kEbml && element.offset == 0) {
            within(element);
        } else {
            count(element.id == id::kVoid ? mAccount.padding : mAccount.unreachable, element.end);
            mWalk.skipChildren();
        }
    }

    void within(const Element& element) {
        countGap(element.offset);
        if (element.id == id::kVoid || element.id == id::kCrc32) return count(mAccount.padding, element.end);
        if (element.id == id::kSimpleBlock || element.id == id::kBlock)
            return isReached(element.id) ? block(element) : count(mAccount.unreachable, element.end);
        count(mAccount.metadata, element.dataOffset);
        if (element.id == id::kCluster) ++mAccount.clusters;
        if (element.id == id::kClusterTimecode) takeTime(element);
        mExtras.take(element, mWay, mBlockTrack, mWalk);
        if (element.id == id::kBlockAdditional) return count(mAccount.additions, element.end);
        if (isMaster(element.info) && mWay.size() < kMostDepth) return mWay.push_back(element);
        count(mAccount.metadata, element.end);
        mWalk.skipChildren();
    }

    // Reading looks for blocks in the Segment's Clusters only.
    bool isReached(uint32_t blockId) const {
        const size_t depth = mWay.size();
        return blockId == id::kSimpleBlock
                   ? depth == 2 && mWay[1].id == id::kCluster
                   : depth == 3 && mWay[2].id == id::kBlockGroup && mWay[1].id == id::kCluster;
    }

    // A Cluster without a time goes on with the time of the one before, as it does where it is delivered.
    void takeTime(Element element) {
        if (!std::holds_alternative<uint64_t>(element.value)) mWalk.readValue(element);  // in another place
        if (const auto* time = std::get_if<uint64_t>(&element.value)) mTime = *time;
    }

    void noteMissing(const Element& element) {
        if (element.payloadEnd > mWalk.end())
            mAccount.missing = {element.payloadEnd - mWalk.end(), element.offset};
    }

    void block(const Element& element) {
        const BlockReading reading = mWalk.readBlock(mTime);
        mBlockTrack = reading.track;
        count(mAccount.metadata, std::min(reading.dataOffset, element.end));
        const bool isNew = mAccount.blocks.count(reading.track) == 0;
        if (isNew && mAccount.blocks.size() >= ElementWalk::kMostTracks)
            return count(mAccount.unreachable, element.end);
        BlockTally& tally = mAccount.blocks[reading.track];
        add(element, reading, tally);
        if (mIsOpenEnded && !mAccount.missing) noteMissing(element);
        if (!reading.hasTrack) return count(mAccount.unreachable, element.end);
        count(reading.isRefused ? mAccount.damaged : tally.payload, element.end);
    }

    static void add(const Element& element, const BlockReading& reading, BlockTally& tally) {
        if (tally.blocks++ == 0) tally.first = element.offset;
        if (reading.isTimeWrapped && tally.wrapped++ == 0) tally.firstWrapped = element.offset;
        if (reading.laces && *reading.laces != 1) addLaces(element, *reading.laces, tally);
        if (!reading.isRefused || tally.refused++ > 0) return;
        tally.firstRefused = element.offset;
        tally.refusedFor = reading.refusedFor.value_or(LossKind{});
    }

    // One frame in a laced block is no more than that.
    static void addLaces(const Element& element, size_t laces, BlockTally& tally) {
        if (tally.laced++ == 0) tally.firstLaced = element.offset;
        tally.laces += laces;
    }

    ElementWalk mWalk;
    const std::function<void(uint64_t)>& mOnBytes;
    ByteAccount mAccount;
    std::vector<Element> mWay;  // the masters that the walk is in
    uint64_t mAt = 0;
    ExtrasTally mExtras;
    uint64_t mBlockTrack = 0;   // of the last block
    bool mIsOpenEnded = false;  // the Segment does not say where it ends
    uint64_t mTime = 0;         // of the Cluster, in timecode units
};

}  // namespace

ByteAccount accountBytes(const android::sp<android::DataSource>& source,
                         const std::function<void(uint64_t)>& onBytes) {
    return ByteCount(source, onBytes).run();
}

}  // namespace mkvx
