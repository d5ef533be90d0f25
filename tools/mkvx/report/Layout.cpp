#include <algorithm>

#include "base/Log.h"
#include "matroska/MatroskaExtExtractor.h"
#include "report/Collect.h"

namespace mkvx {
namespace {

using MatroskaExtReader::BlockRun;
using MatroskaExtReader::CMatroskaFile;
using MatroskaExtReader::CMatroskaNode;
namespace id = MatroskaExtReader::id;

std::string nameOf(uint32_t elementId) {
    const MatroskaExtReader::ElementInfo* info = MatroskaExtReader::FindElementInfo(elementId);
    return info != nullptr ? info->name : "unknown element";
}

class LayoutWalk {
  public:
    LayoutWalk(CMatroskaFile& file, FileLayout& layout) : mFile(file), mLayout(layout) {}

    // Each step of a walk moves forward, so the file bounds both loops.
    void run() {
        const android::sp<CMatroskaNode> root = new CMatroskaNode(&mFile);
        const android::sp<CMatroskaNode> segment = mFile.SegmentNode();
        for (android::sp<CMatroskaNode> node = root->Child(0, true); node != nullptr;) {
            if (segment != nullptr && node->HeaderStart() == segment->HeaderStart())
                takeSegment(*segment);
            else
                add(nameOf(node->Id()), node->HeaderStart(), node->End());
            if (!node->Next(false)) break;
        }
        if (mFile.HasKnownLength()) add("not reached", mEnd, mFile.Length());
    }

  private:
    void takeSegment(const CMatroskaNode& segment) {
        if (mFile.HasKnownLength() && !segment.HasUnknownSize() && segment.PayloadEnd() > mFile.Length())
            mLayout.missing = segment.PayloadEnd() - mFile.Length();
        add("Segment header", segment.HeaderStart(), segment.DataStart());
        const android::sp<CMatroskaNode> child = segment.Child(0, true);
        if (child == nullptr) return;
        do {
            if (child->Id() == id::kCluster) takeCluster(child);
            add(nameOf(child->Id()), child->HeaderStart(), child->End());
        } while (child->Next(false));
    }

    void takeCluster(const android::sp<CMatroskaNode>& cluster) {
        ClusterMark mark;
        android::sp<BlockRun> run = mFile.Blocks.First(cluster.get());
        size_t index = 0;
        while (run->Reach(index)) {  // bounded: every block moves forward
            ++mark.blocks;
            if (++index < BlockRun::kBlocks) continue;
            run = mFile.Blocks.After(*run);
            index = 0;
        }
        if (cluster->HasUnknownSize() && !run->IsFull()) cluster->KnowOpenEnd(run->WalkEnd());
        mark.timeUs = int64_t(mFile.ToMicroseconds(run->ClusterTimecode()));
        mark.position = cluster->HeaderStart();
        mark.size = cluster->End() - std::min(cluster->HeaderStart(), cluster->End());
        mLayout.clusters.add(mark);
    }

    // What lies between the element before and this one was skipped: nothing readable is there.
    void add(const std::string& name, uint64_t begin, uint64_t end) {
        if (begin > mEnd) append("damaged", mEnd, begin);
        end = mFile.HasKnownLength() ? std::min(end, mFile.Length()) : end;
        append(name, std::max(begin, mEnd), end);
    }

    void append(const std::string& name, uint64_t begin, uint64_t end) {
        if (end <= begin) return;
        mEnd = end;
        mLayout.bytesByName[name] += end - begin;
        std::vector<Region>& regions = mLayout.regions;
        if (!regions.empty() && regions.back().name == name && regions.back().end == begin) {
            regions.back().end = end;
            ++regions.back().elements;
        } else if (regions.size() < FileLayout::kMostRegions) {
            regions.push_back({name, begin, end, 1});
        } else {
            mLayout.isCut = true;
        }
    }

    CMatroskaFile& mFile;
    FileLayout& mLayout;
    uint64_t mEnd = 0;
};

}  // namespace

FileLayout readLayout(android::MatroskaExtExtractor& extractor) {
    MuteLog mute;
    FileLayout layout;
    LayoutWalk(*extractor.File(), layout).run();
    return layout;
}

}  // namespace mkvx
