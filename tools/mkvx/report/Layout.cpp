#include <algorithm>

#include "base/Log.h"
#include "device/ElementTable.h"
#include "device/ElementWalk.h"
#include "report/Collect.h"

namespace mkvx {
namespace {

class LayoutMap {
  public:
    LayoutMap(const android::sp<android::DataSource>& source, FileLayout& layout)
        : mWalk(source, ElementWalk::Knows::kDocument), mLayout(layout) {}

    void run() {
        while (const std::optional<WalkItem> item = mWalk.next())  // bounded by the walk
            if (const auto* element = std::get_if<Element>(&item->what)) take(item->depth, *element);
        endCluster();
        if (mWalk.length()) add("not reached", mEnd, *mWalk.length());
    }

  private:
    void take(unsigned depth, const Element& element) {
        if (depth < 2) endCluster();
        if (depth == 0 && element.id == id::kSegment && !mHasSegment) return beginSegment(element);
        if (depth == 1 && element.id == id::kCluster) return beginCluster(element);
        mWalk.skipChildren();
        if (depth < 2)
            add(elementKind(element.id), element.offset, element.end);
        else
            takeOfCluster(element);
    }

    void beginSegment(const Element& segment) {
        mHasSegment = true;
        if (mWalk.length() && !segment.hasUnknownSize && segment.payloadEnd > *mWalk.length())
            mLayout.missing = segment.payloadEnd - *mWalk.length();
        add("Segment header", segment.offset, segment.dataOffset);
    }

    void beginCluster(const Element& cluster) {
        mCluster = ClusterMark();
        mCluster->position = cluster.offset;
        mCluster->size = cluster.end - std::min(cluster.offset, cluster.end);
        mHasTime = false;
        add(elementKind(cluster.id), cluster.offset, cluster.end);
    }

    void takeOfCluster(const Element& element) {
        if (element.id == id::kSimpleBlock || element.id == id::kBlockGroup) ++mCluster->blocks;
        if (element.id != id::kClusterTimecode || mHasTime) return;
        mHasTime = true;
        const auto* time = std::get_if<uint64_t>(&element.value);
        if (time != nullptr) mCluster->timeUs = unitsToUs(*time, mWalk.context().scale).value_or(INT64_MAX);
    }

    void endCluster() {
        if (mCluster) mLayout.clusters.add(*mCluster);
        mCluster.reset();
    }

    // What lies between the element before and this one was skipped: nothing readable is there.
    void add(const std::string& name, uint64_t begin, uint64_t end) {
        if (begin > mEnd) append("damaged", mEnd, begin);
        end = mWalk.length() ? std::min(end, *mWalk.length()) : end;
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

    ElementWalk mWalk;
    FileLayout& mLayout;
    bool mHasSegment = false;
    std::optional<ClusterMark> mCluster;  // that the walk is in
    bool mHasTime = false;                // its Timestamp was met; a second one counts for nothing
    uint64_t mEnd = 0;
};

}  // namespace

FileLayout readLayout(const android::sp<android::DataSource>& source) {
    MuteLog mute;
    FileLayout layout;
    LayoutMap(source, layout).run();
    return layout;
}

}  // namespace mkvx
