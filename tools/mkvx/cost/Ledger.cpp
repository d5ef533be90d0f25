#include "cost/Ledger.h"

#include <algorithm>
#include <iterator>

namespace mkvx {

const char* toString(CostStage stage) {
    static const char* const names[kCostStages] = {"sniffing",    "head",     "tracks", "cues",
                                                   "other",       "clusters", "scan",   "configuration",
                                                   "first_units", "seeks",    "demux"};
    return names[size_t(stage)];
}

void StageCost::add(const StageCost& other) {
    if (other.reads == 0) return;
    smallest = reads == 0 ? other.smallest : std::min(smallest, other.smallest);
    largest = std::max(largest, other.largest);
    reads += other.reads;
    bytes += other.bytes;
    distinct += other.distinct;
    backwards += other.backwards;
    requests += other.requests;
    requested += other.requested;
}

uint64_t ByteSet::add(uint64_t begin, uint64_t end) {
    if (begin >= end) return 0;
    uint64_t known = 0, from = begin, to = end;
    auto range = mEndOf.upper_bound(begin);
    if (range != mEndOf.begin() && std::prev(range)->second >= begin) --range;
    while (range != mEndOf.end() && range->first <= end) {
        const uint64_t first = std::max(range->first, begin), last = std::min(range->second, end);
        known += last > first ? last - first : 0;
        from = std::min(from, range->first);
        to = std::max(to, range->second);
        range = mEndOf.erase(range);
    }
    mEndOf.emplace_hint(range, from, to);
    return end - begin - known;
}

void CostLedger::add(CostStage stage, uint64_t offset, uint64_t asked, int64_t got) {
    StageCost one;
    one.reads = 1;
    one.bytes = one.smallest = one.largest = uint64_t(std::max<int64_t>(got, 0));
    one.distinct = mSeen.add(offset, offset + one.bytes);
    one.backwards = offset < mLastEnd ? 1 : 0;
    mLastEnd = offset + one.bytes;
    request(one, offset, std::min(offset + asked, mSize));
    mCosts[size_t(stage)].add(one);
}

void CostLedger::request(StageCost& cost, uint64_t begin, uint64_t end) {
    if (!mCache) {
        cost.requests = 1;
        cost.requested = cost.bytes;
        return;
    }
    if (begin >= end) return;  // known to be behind the end
    const uint64_t blockSize = mCache->blockSize(), last = (end - 1) / blockSize;
    for (uint64_t block = begin / blockSize; block <= last; ++block) {
        if (mCache->find(block)) continue;
        const BlockCache::Run run = mCache->missingRun(block, last);
        for (uint64_t i = 0; i < run.count; ++i) {
            (void)mCache->begin(run.first + i);
            mCache->finish(run.first + i, 0);
        }
        ++cost.requests;
        cost.requested += std::min((run.first + run.count) * blockSize, mSize) - run.first * blockSize;
    }
}

}  // namespace mkvx
