#include "check/Bytes.h"

#include <algorithm>

#include "matroska/reader/Lacing.h"
#include "matroska/reader/MatroskaReader.h"

namespace mkvx {
namespace {

namespace id = MatroskaExtReader::id;
using android::sp;
using MatroskaExtReader::CMatroskaFile;
using MatroskaExtReader::CMatroskaNode;
using MatroskaExtReader::CUInt;
using MatroskaExtReader::LossKind;
using MatroskaExtReader::SimpleBlock;
using MatroskaExtReader::TrackEntry;

constexpr int kMostDepth = 16;

bool isMaster(uint32_t elementId) {
    const MatroskaExtReader::ElementInfo* info = MatroskaExtReader::FindElementInfo(elementId);
    return info != nullptr && info->type == MatroskaExtReader::ElementType::kMaster;
}

// Where an element stands.
struct Place {
    int depth = 0;
    uint32_t parent = 0, grandparent = 0;

    Place below(uint32_t elementId) const { return {depth + 1, elementId, parent}; }
    // Reading looks for blocks in the Segment's Clusters only.
    bool holdsBlocks(uint32_t blockId) const {
        return blockId == id::kSimpleBlock
                   ? parent == id::kCluster && depth == 2
                   : parent == id::kBlockGroup && grandparent == id::kCluster && depth == 3;
    }
};

class ByteWalk {
  public:
    ByteWalk(CMatroskaFile& file, const std::function<void(uint64_t)>& onBytes)
        : mFile(file), mOnBytes(onBytes) {}

    ByteAccount walk() {
        const sp<CMatroskaNode> root = new CMatroskaNode(&mFile);
        sp<CMatroskaNode> child = root->Child(0, true);
        if (child != nullptr) {
            do topLevel(*child);
            while (child->Next(false));  // bounded: every step moves forward
        }
        count(mAccount.unreachable, mFile.Length());
        return std::move(mAccount);
    }

  private:
    // Everything from where the count stands up to `end`.
    void count(uint64_t& share, uint64_t end) {
        end = std::min(end, mFile.Length());
        if (end > mAt) {
            share += end - mAt;
            if (mOnBytes) mOnBytes(end - mAt);
            mAt = end;
        }
    }

    // What is left over in front of the element at `start`.
    void countGap(uint64_t start) {
        if (start <= mAt) return;
        ++mAccount.damageCount;
        if (mAccount.damages.size() < ByteAccount::kMostKept)
            mAccount.damages.push_back({mAt, std::min(start, mFile.Length()) - mAt});
        count(mAccount.damaged, start);
    }

    void topLevel(const CMatroskaNode& node) {
        count(mAccount.unreachable, node.HeaderStart());
        if (node.Id() == id::kSegment && mAccount.segments++ == 0) {
            element(node, {});
            if (!node.HasUnknownSize() && node.PayloadEnd() > mFile.Length())
                mAccount.missing = node.PayloadEnd() - mFile.Length();
        } else if (node.Id() == id::kEbml && node.HeaderStart() == 0) {
            element(node, {});
        } else {
            count(node.Id() == id::kVoid ? mAccount.padding : mAccount.unreachable, node.End());
        }
    }

    void element(const CMatroskaNode& node, Place place) {
        countGap(node.HeaderStart());
        if (node.Id() == id::kVoid || node.Id() == id::kCrc32) return count(mAccount.padding, node.End());
        if (node.Id() == id::kSimpleBlock || node.Id() == id::kBlock)
            return place.holdsBlocks(node.Id()) ? block(node) : count(mAccount.unreachable, node.End());
        count(mAccount.metadata, node.DataStart());
        if (node.Id() == id::kCluster) ++mAccount.clusters;
        if (node.Id() == id::kClusterTimecode) takeTimecode(node);
        if (isMaster(node.Id()) && place.depth < kMostDepth) return children(node, place.below(node.Id()));
        count(mAccount.metadata, node.End());
    }

    void children(const CMatroskaNode& node, Place place) {
        const sp<CMatroskaNode> child = node.Child(0, true);
        if (child != nullptr) {
            do element(*child, place);
            while (child->Next(false));  // bounded: every step moves forward
        }
        const bool isOpen = node.HasUnknownSize() && node.Id() == id::kCluster;
        if (!isOpen && node.Size() > 0) countGap(std::min(node.End(), mFile.Length()));
    }

    // A Cluster without a time goes on with the time of the one before, as it does where it is delivered.
    void takeTimecode(const CMatroskaNode& node) {
        CUInt value;
        mFile.SeekTo(node.DataStart());
        const sp<CMatroskaNode> copy = node.Copy();
        if (!MatroskaExtReader::Failed(value.Parse(copy.get()))) mTimecode = value.Get();
    }

    void block(const CMatroskaNode& node) {
        SimpleBlock block;
        const sp<CMatroskaNode> copy = node.Copy();
        (void)block.Parse(copy.get());  // what cannot be read counts as zeros
        count(mAccount.metadata, std::min(block.DataPosition, node.End()));
        const uint64_t number = block.TrackNumber.Get();
        const TrackEntry* track = number <= UINT32_MAX ? mFile.FindTrack(uint32_t(number)) : nullptr;
        const bool isNew = mAccount.blocks.count(number) == 0;
        if (isNew && mAccount.blocks.size() >= MatroskaExtReader::limit::kTrackEntries)
            return count(mAccount.unreachable, node.End());
        BlockTally& tally = mAccount.blocks[number];
        ++tally.blocks;
        if (node.PayloadEnd() > mFile.Length() && !mAccount.missing)  // in a Segment of unknown size
            mAccount.missing = node.PayloadEnd() - mFile.Length();
        noteTime(node, block, tally);
        const uint64_t end = std::min(node.End(), mFile.Length());
        if (track == nullptr) return count(mAccount.unreachable, end);
        if (!isReadable(*copy, block, *track, tally)) return count(mAccount.damaged, end);
        count(tally.payload, end);
    }

    bool isReadable(CMatroskaNode& node, SimpleBlock& block, const TrackEntry& track, BlockTally& tally) {
        uint64_t before[kLossKinds];
        for (size_t i = 0; i < kLossKinds; ++i) before[i] = mFile.Losses.Count(LossKind(i));
        (void)block.GetSize(&node, &track);
        if (!block.IsRefused() && block.Lacing() != MatroskaExtReader::kLacingNone) {
            if (block.FrameSizes.empty()) (void)block.ParseData(&node, &track, true);
            ++tally.laced;
            tally.laces += block.FrameSizes.size();
        }
        if (!block.IsRefused()) return true;
        if (tally.refused++ == 0) {
            tally.firstRefused = node.HeaderStart();
            for (size_t i = 0; i < kLossKinds; ++i)
                if (mFile.Losses.Count(LossKind(i)) > before[i]) tally.refusedFor = LossKind(i);
        }
        return false;
    }

    void noteTime(const CMatroskaNode& node, const SimpleBlock& block, BlockTally& tally) {
        const int64_t relative = block.TimeCode.Get();
        const uint64_t most = mFile.TimecodeScale() == 0 ? UINT64_MAX : UINT64_MAX / mFile.TimecodeScale();
        const bool isBeforeZero = relative < 0 && uint64_t(-relative) > mTimecode;
        if (!isBeforeZero && mTimecode <= most) return;
        if (tally.wrapped++ == 0) tally.firstWrapped = node.HeaderStart();
    }

    static constexpr size_t kLossKinds = size_t(LossKind::kRefusedAllocation) + 1;

    CMatroskaFile& mFile;
    const std::function<void(uint64_t)>& mOnBytes;
    ByteAccount mAccount;
    uint64_t mAt = 0;
    uint64_t mTimecode = 0;
};

}  // namespace

ByteAccount accountBytes(const sp<android::DataSource>& source,
                         const std::function<void(uint64_t)>& onBytes) {
    CMatroskaFile file(source);
    (void)file.Init();  // what it finds is what there is
    return ByteWalk(file, onBytes).walk();
}

}  // namespace mkvx
