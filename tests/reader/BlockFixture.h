// One block on one track, delivered as an iterator would: size first, then the bytes.
#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "reader/ReaderFixture.h"

namespace testing_support {

struct OneBlock : InitialisedFile {
    OneBlock(const Element& track, const Element& block, Faults faults = {})
        : InitialisedFile(File(track, block), faults), group(new reader::BlockGroup) {
        const auto cluster = SegmentNode()->Child(id::kCluster, true);
        node = cluster->GetFirstBlock();
        parsed = node->Id() == id::kBlockGroup ? group->Parse(node.get()) : group->Block.Parse(node.get());
        entry = file.FindTrack(static_cast<uint32_t>(group->Block.TrackNumber.Get()));
    }

    static Document File(const Element& track, const Element& block) {
        return Write({EbmlHeader(), Segment({Info(1), Master(id::kTracks, {track}), Cluster(0, {block})})});
    }

    reader::SimpleBlock& Block() { return group->Block; }

    // Hex of what one GetSize and Read give, "refused" where Read fails. The buffer has exactly the size
    // asked for.
    std::string Deliver(uint32_t timeBase = 0) {
        const uint32_t size = Block().GetSize(node.get(), entry);
        return DeliverInto(size, timeBase);
    }
    std::string DeliverInto(uint32_t room, uint32_t timeBase = 0) {
        std::vector<uint8_t> out(room);
        long length = static_cast<long>(room);
        const reader::Result readResult = Block().Read(node.get(), entry, out.data(), length, timeBase);
        if (reader::Failed(readResult)) return "refused";
        EXPECT_LE(length, static_cast<long>(room));
        return ToHex(out.data(), static_cast<size_t>(std::min(length, static_cast<long>(room))));
    }

    std::vector<uint64_t> Sizes() {
        Block().ParseData(node.get(), entry, true);
        return {Block().FrameSizes.begin(), Block().FrameSizes.end()};
    }

    std::unique_ptr<reader::BlockGroup> group;
    android::sp<reader::CMatroskaNode> node;
    reader::TrackEntry* entry = nullptr;
    reader::Result parsed = 0;
};

inline Element EncodedTrack(Elements encodings) {
    return Mpeg2Track(1, {Master(id::kContentEncodings, std::move(encodings))});
}

}  // namespace testing_support
