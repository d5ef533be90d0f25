#include "properties/PlainWalk.h"

#include <cstring>
#include <ostream>

namespace testing_support {

namespace reader = MatroskaExtReader;
using android::sp;

namespace {}  // namespace

std::ostream& operator<<(std::ostream& out, const Delivery& delivery) {
    if (delivery.isRefused) return out << "refused";
    return out << delivery.unit;
}

Bytes Comparable(Bytes bytes, const reader::TrackEntry* track) {
    constexpr size_t kRecord = 16, kFrameSize = 10, kAddress = 12;
    if (track == nullptr || !track->IsRealMedia || track->TrackType.Get() != kAudioType) return bytes;
    for (size_t at = 0; at + kRecord <= bytes.size();) {
        uint16_t frameSize;  // in this machine's byte order
        std::memcpy(&frameSize, &bytes[at + kFrameSize], sizeof frameSize);
        std::memset(&bytes[at + kAddress], 0, kRecord - kAddress);
        at += kRecord + frameSize;
    }
    return bytes;
}

PlainWalk::PlainWalk(reader::CMatroskaFile* file, uint32_t trackNumber)
    : mFile(file), mTrackNumber(trackNumber), mTrack(file->FindTrack(trackNumber)) {
    if (file->SegmentNode() == nullptr) return;
    WalkFrom(file->SegmentNode()->Child(id::kCluster, true));
}

void PlainWalk::WalkFrom(sp<reader::CMatroskaNode> cluster) {
    if (cluster == nullptr) return;
    for (;;) {  // bounded: every step moves forward
        mClusters.emplace_back();
        mClusters.back().position = cluster->HeaderStart() - mFile->Segment.DataStart;
        WalkCluster(*cluster);
        if (!cluster->Next(true)) break;
    }
    mClusters.back().isLast = true;
}

void PlainWalk::WalkCluster(const reader::CMatroskaNode& node) {
    sp<reader::CMatroskaNode> element = node.GetFirstBlock();
    while (element != nullptr) {  // bounded: every step moves forward
        reader::BlockGroup group;
        reader::Result parsed;
        if (element->Id() == id::kSimpleBlock) {
            parsed = group.Block.Parse(element.get());
            if (!group.Block.IsKeyFrameFlagged()) group.ReferenceBlock.Set(0);
        } else {
            parsed = group.Parse(element.get());
        }
        if (!reader::Failed(parsed)) {
            if (!mClusters.back().hasBlock) TakeTimecode(node);
            mClusters.back().hasBlock = true;
            if (group.Block.TrackNumber.Get() == mTrackNumber) {
                const int64_t timeUs = TimeOf(group);
                const bool isKey = group.IsKeyFrame();
                mClusters.back().blocks.push_back({timeUs, isKey, Deliver(group, element.get())});
            }
        }
        if (!element->NextBlock()) break;
    }
}

// A Cluster without one goes on with the last one's.
void PlainWalk::TakeTimecode(const reader::CMatroskaNode& cluster) {
    const sp<reader::CMatroskaNode> child = cluster.Child(id::kClusterTimecode, true);
    if (child == nullptr) return;
    reader::CUInt value;
    (void)value.Parse(child.get());
    mTimecode = value.Get();
}

int64_t PlainWalk::TimeOf(const reader::BlockGroup& group) const {
    const uint64_t units = mTimecode + static_cast<uint64_t>(group.Block.TimeCode.Get());
    return static_cast<int64_t>(mFile->ToMicroseconds(units));
}

Deliveries PlainWalk::Deliver(reader::BlockGroup& group, reader::CMatroskaNode* node) const {
    Deliveries deliveries;
    do {  // bounded: each turn takes a frame away
        deliveries.push_back(DeliverOnce(group, node));
    } while (mTrack != nullptr && mTrack->IsVorbis && !deliveries.back().isRefused &&
             !group.Block.DecodedFrames.empty());
    return deliveries;
}

Delivery PlainWalk::DeliverOnce(reader::BlockGroup& group, reader::CMatroskaNode* node) const {
    Delivery delivery;
    const uint32_t size = group.Block.GetSize(node, mTrack);
    Bytes bytes(size);
    long length = static_cast<long>(size);
    if (group.Block.IsRefused() || reader::Failed(group.Block.Read(node, mTrack, bytes.data(), length,
                                                                   static_cast<uint32_t>(mTimecode)))) {
        delivery.isRefused = true;
        return delivery;
    }
    bytes.resize(static_cast<size_t>(length));
    delivery.unit.timeUs = TimeOf(group);
    delivery.unit.sync = group.IsKeyFrame() ? 1 : 0;
    if (mTrack != nullptr && mTrack->SubtitleType != reader::kSubtitleNone) {
        const uint64_t duration = mFile->ToMicroseconds(group.BlockDuration.Get());
        delivery.unit.endUs = static_cast<int64_t>(static_cast<uint64_t>(delivery.unit.timeUs) + duration);
    }
    delivery.unit.bytes = Comparable(std::move(bytes), mTrack);
    return delivery;
}

Deliveries PlainWalk::From(size_t cluster, size_t block) const {
    Deliveries all;
    for (; cluster < mClusters.size(); ++cluster, block = 0) {
        for (; block < mClusters[cluster].blocks.size(); ++block) {
            const Deliveries& more = mClusters[cluster].blocks[block].deliveries;
            all.insert(all.end(), more.begin(), more.end());
        }
        if (mClusters[cluster].isLast) break;
    }
    return all;
}

size_t PlainWalk::FindCluster(uint64_t position) {
    for (size_t i = 0; i < mClusters.size(); ++i)
        if (mClusters[i].position == position) return i;
    mFile->SeekTo(mFile->Segment.DataStart + position);
    const sp<reader::CMatroskaNode> node = new reader::CMatroskaNode(mFile->SegmentNode());
    if (node->Id() != id::kCluster) return kNone;
    const size_t first = mClusters.size();
    WalkFrom(node);
    return first;
}

// The Cluster's first key frame, unless another frame behind the target comes first: then, and at the
// Cluster's end, the place behind what was looked at.
bool PlainWalk::FindKeyBlock(const Cluster& cluster, int64_t timeUs, size_t* place) const {
    for (*place = 0; *place < cluster.blocks.size(); ++*place) {
        const Block& block = cluster.blocks[*place];
        if (block.isKey) return true;
        if (block.timeUs <= timeUs) continue;
        ++*place;
        return false;
    }
    return false;
}

// Every cued Cluster at or before the target is tried, the latest point first. When none has a key frame,
// reading goes on behind what was looked at in the one tried last, or at the start of the file if that was no
// Cluster.
Deliveries PlainWalk::FromTime(int64_t timeUs) {
    const uint64_t durationUs = mFile->Segment.GetDuration() / 1000;
    if (static_cast<uint64_t>(timeUs) >= durationUs) return {};
    if (timeUs <= 0) return All();
    size_t lastTried = kNone, place = 0;
    for (const reader::AutoPtr<reader::Cue>& cue : mFile->Segment.Cues) {
        for (size_t i = cue->Points.size(); i-- > 0;) {
            const reader::CuePoint& point = cue->Points[i];
            if (mFile->ToMicroseconds(point.CueTime) > static_cast<uint64_t>(timeUs)) continue;
            const reader::CueTrackPosition* positions = cue->PositionsOf(point);
            for (uint32_t k = 0; k < point.PositionCount; ++k) {
                if (positions[k].CueTrack != mFile->MasterTrack()) continue;
                lastTried = FindCluster(positions[k].CueClusterPosition);
                if (lastTried == kNone) continue;
                if (FindKeyBlock(mClusters[lastTried], timeUs, &place)) return From(lastTried, place);
                if (!mClusters[lastTried].hasBlock) lastTried = kNone;
            }
        }
    }
    return lastTried == kNone ? All() : From(lastTried, place);
}

}  // namespace testing_support
