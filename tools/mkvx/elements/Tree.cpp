#include "elements/Tree.h"

#include <fmt/format.h>
#include <algorithm>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "device/ElementTable.h"
#include "elements/Meaning.h"

namespace mkvx {
namespace {

// How many siblings of one name a shortened listing shows.
constexpr uint64_t kFewSiblings = 3, kManySiblings = 20;
constexpr uint32_t kGapKey = 0, kUnknownKey = 1;  // in the place of an ID

bool isPlentiful(uint32_t id) {
    return id == id::kCluster || id == id::kCuePoint || id == id::kSimpleBlock || id == id::kBlockGroup;
}

uint32_t keyOf(const WalkItem& item) {
    const auto* element = std::get_if<Element>(&item.what);
    if (element == nullptr) return kGapKey;
    return element->info != nullptr ? element->id : kUnknownKey;
}

std::string rowName(uint32_t key) {
    return key == kGapKey ? "gap" : elementKind(key);
}

std::pair<uint64_t, uint64_t> extentOf(const WalkItem& item) {
    if (const auto* element = std::get_if<Element>(&item.what))
        return {element->offset, std::max(element->end, element->dataOffset)};
    const Gap& gap = std::get<Gap>(item.what);
    return {gap.offset, gap.end};
}

// The walk tells times by Info, so it always goes through that.
bool isInfo(const WalkItem& item) {
    const auto* element = std::get_if<Element>(&item.what);
    return element != nullptr && element->id == id::kInfo;
}

// An element's header counts, its parent's end does not stop it.
bool holds(const WalkItem& item, uint64_t at) {
    const auto [from, to] = extentOf(item);
    return from <= at && at < to;
}

// The items of the file that hold the byte.
std::vector<WalkItem> walkTo(ElementWalk& walk, uint64_t at) {
    std::vector<WalkItem> way;
    while (std::optional<WalkItem> item = walk.next()) {  // bounded: skips what does not hold the byte
        if (item->depth < way.size()) break;              // the deepest one has ended
        if (!holds(*item, at)) {
            if (!isInfo(*item)) walk.skipChildren();
            continue;
        }
        way.push_back(std::move(*item));
        auto* element = std::get_if<Element>(&way.back().what);
        if (element != nullptr) readMeaningfully(walk, *element);
        if (element == nullptr || at < element->dataOffset) break;
    }
    return way;
}

TreeItem asListed(WalkItem item) {
    return std::visit([&](auto& what) { return TreeItem{item.depth, std::move(what)}; }, item.what);
}

std::vector<WalkItem> requireWay(const android::sp<android::DataSource>& source, const std::string& file,
                                 uint64_t at) {
    ElementWalk walk(source);
    std::vector<WalkItem> way = walkTo(walk, at);
    throwIfInterrupted(file);
    if (way.empty())
        throw UsageFailure(fmt::format("{}: the file has no byte {}{}", file, at,
                                       walk.length() ? fmt::format(", it ends at {}", *walk.length()) : ""));
    return way;
}

}  // namespace

std::vector<TreeItem> wayTo(const android::sp<android::DataSource>& source, const std::string& file,
                            uint64_t at) {
    std::vector<TreeItem> way;
    for (WalkItem& item : requireWay(source, file, at)) way.push_back(asListed(std::move(item)));
    return way;
}

TreeReader::TreeReader(const android::sp<android::DataSource>& source, const std::string& file,
                       const TreeOptions& options)
    : mOptions(options), mWalk(source) {
    if (mOptions.at) mTarget = requireWay(source, file, *mOptions.at).back();
}

std::optional<TreeItem> TreeReader::next() {
    while (mReady.empty() && !mIsOver) {  // bounded by the walk
        std::optional<WalkItem> item = mWalk.next();
        if (wasInterrupted()) return std::nullopt;  // what came may be made of reads that failed
        if (item) mOptions.onReached(extentOf(*item).first);
        const Verdict verdict = item ? judge(*item) : Verdict::kStop;
        if (verdict == Verdict::kShow) show(std::move(*item));
        if (verdict == Verdict::kLeaveOut) leaveOut(*item);
        if (verdict == Verdict::kStop) stop();
    }
    return wasInterrupted() ? std::nullopt : takeReady();
}

void TreeReader::stop() {
    closeRows(0);
    mIsOver = true;
}

std::optional<TreeItem> TreeReader::takeReady() {
    if (mReady.empty()) return std::nullopt;
    TreeItem item = std::move(mReady.front());
    mReady.pop_front();
    return item;
}

TreeReader::Verdict TreeReader::judge(const WalkItem& item) {
    const unsigned base = mTarget ? mTarget->depth + 1 : 0;
    if (mTarget) {
        const Verdict verdict = judgeAround(item, *mOptions.at);
        if (verdict != Verdict::kShow || item.depth < base) return verdict;
    }
    const unsigned levels = mOptions.depth.value_or(mTarget ? 1 : ElementWalk::kDeepest);
    if (item.depth >= base + levels) return Verdict::kPassOver;  // only where no level is wanted
    if (item.depth + 1 >= base + levels && !isInfo(item)) mWalk.skipChildren();
    if (!isTooMany(item)) return Verdict::kShow;
    mWalk.skipChildren();
    return Verdict::kLeaveOut;
}

// The way down to the target is shown, then whatever is in it; its siblings are not.
TreeReader::Verdict TreeReader::judgeAround(const WalkItem& item, uint64_t at) {
    if (item.depth > mTarget->depth) return mIsInTarget ? Verdict::kShow : Verdict::kPassOver;
    if (extentOf(item).first > at) return Verdict::kStop;
    if (holds(item, at)) {
        mIsInTarget = item.depth == mTarget->depth;
        return Verdict::kShow;
    }
    mIsInTarget = false;
    if (!isInfo(item)) mWalk.skipChildren();
    return Verdict::kPassOver;
}

bool TreeReader::isTooMany(const WalkItem& item) {
    if (!mOptions.isShortened) return false;
    closeRows(item.depth + 1);
    if (mRows.size() <= item.depth) mRows.resize(item.depth + 1);
    const uint32_t key = keyOf(item);
    return ++mRows[item.depth].shown[key] > (isPlentiful(key) ? kFewSiblings : kManySiblings);
}

void TreeReader::leaveOut(const WalkItem& item) {
    LeftOut& sum = mRows[item.depth].leftOut;
    const auto [from, to] = extentOf(item);
    if (sum.counts.empty()) sum.offset = from;
    sum.end = std::max(sum.end, to);
    const std::string name = rowName(keyOf(item));
    const auto known = std::find_if(sum.counts.begin(), sum.counts.end(),
                                    [&](const auto& count) { return count.first == name; });
    if (known == sum.counts.end())
        sum.counts.emplace_back(name, 1);
    else
        ++known->second;
}

// The rows of `depth` and below have ended.
void TreeReader::closeRows(unsigned depth) {
    while (mRows.size() > depth) {
        flush(unsigned(mRows.size() - 1));
        mRows.pop_back();
    }
}

void TreeReader::flush(unsigned depth) {
    LeftOut& sum = mRows[depth].leftOut;
    if (!sum.counts.empty()) mReady.push_back(TreeItem{depth, std::move(sum)});
    sum = LeftOut();
}

void TreeReader::show(WalkItem item) {
    if (mRows.size() > item.depth) flush(item.depth);
    if (auto* element = std::get_if<Element>(&item.what)) readMeaningfully(mWalk, *element);
    mReady.push_back(asListed(std::move(item)));
    mReady.back().isAsked = mTarget && mReady.back().depth == mTarget->depth;
}

}  // namespace mkvx
