// Which of a file's level-1 elements a byte belongs to, so that a read can be counted where it belongs.
//
// The elements in front of the first Cluster are found by walking, the others through the SeekHeads and from
// there on to the next Cluster, all without the ledger. Reads with this program's own copy of the reader; the
// file is one that a Session accepted. One thread.
#pragma once
#include <media/stagefright/DataSource.h>
#include <map>

#include "cost/Ledger.h"
#include "device/ElementWalk.h"
#include "device/Opening.h"

namespace mkvx {

class CostElements {
  public:
    explicit CostElements(const android::sp<android::DataSource>& bytes);

    // kHead to kClusters; what no known element holds is kClusters behind the first Cluster, else kHead.
    CostStage stageOf(uint64_t offset) const;
    bool isKnown(uint64_t offset) const;
    // Looks behind every Cluster for elements that no SeekHead names, as opening does when its search has
    // not ended before.
    void lookBehindClusters();

  private:
    struct Stretch {
        uint64_t end = 0;
        CostStage stage = CostStage::kOther;
    };

    bool mapElement(const Element& element);
    void mapRun(ElementWalk& walk);
    void mapSeekTarget(const SeekTarget& target);
    const Stretch* find(uint64_t offset) const;

    android::sp<android::DataSource> mBytes;
    std::map<uint64_t, Stretch> mElements;  // by first byte
    uint64_t mFirstCluster;
};

}  // namespace mkvx
