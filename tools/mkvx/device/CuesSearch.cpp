#include "device/CuesSearch.h"

#include <algorithm>
#include <vector>

#include "base/Log.h"
#include "device/ElementWalk.h"
#include "matroska/reader/MatroskaReader.h"

namespace mkvx {
namespace {

using android::sp;
using MatroskaExtReader::CMatroskaFile;
using MatroskaExtReader::CMatroskaNode;

// Bytes on either side of where a SeekHead leads, and of each stretch of damage, that are looked through.
constexpr uint64_t kNear = 64u << 10;
constexpr uint64_t kMostOfGap = 1u << 20;
constexpr size_t kMostGaps = 16;
constexpr uint8_t kCuesId[] = {0x1C, 0x53, 0xBB, 0x6B};

class Search {
  public:
    explicit Search(const sp<android::DataSource>& source) : mSource(source), mWalk(source) {}

    CuesPlaces run() {
        while (const std::optional<WalkItem> item = mWalk.next()) {  // bounded by the walk
            if (const auto* gap = std::get_if<Gap>(&item->what))
                mGaps.push_back(*gap);
            else
                take(item->depth, std::get<Element>(item->what));
            if (mPlaces.found || mGaps.size() == kMostGaps) break;
        }
        if (!mPlaces.found && mPlaces.entry) lookAround(mPlaces.entry->leadsTo);
        for (const Gap& gap : mGaps)
            if (!mPlaces.found) lookThrough(gap.offset, std::min(gap.end - gap.offset, kMostOfGap));
        if (mPlaces.found) mPlaces.hasPoints = holdsPoints(*mPlaces.found);
        return mPlaces;
    }

  private:
    void take(unsigned depth, Element element) {
        if (depth == 0 && element.id == id::kSegment && !mHasSegment) {
            mHasSegment = true;
        } else if (element.id == id::kCues) {
            mPlaces.found = element.offset;
        } else if (element.id == id::kSeek) {
            mSeek = {element.offset, std::nullopt, std::nullopt};
        } else if (element.id == id::kSeekId || element.id == id::kSeekPosition) {
            takeOfSeek(element);
        } else if (element.id != id::kSeekHead && !(element.id == id::kCluster && element.hasUnknownSize)) {
            mWalk.skipChildren();
        }
    }

    void takeOfSeek(Element& element) {
        mWalk.readValue(element);
        if (const auto* named = std::get_if<IdValue>(&element.value)) mSeek.id = named->id;
        if (const auto* at = std::get_if<uint64_t>(&element.value)) mSeek.position = *at;
        if (mSeek.id != id::kCues || !mSeek.position || mPlaces.entry) return;
        mPlaces.entry = {mSeek.offset, mWalk.context().segmentData + *mSeek.position};
    }

    void lookAround(uint64_t position) {
        if (position >= mWalk.end()) position = mWalk.end();
        const uint64_t begin = position - std::min(position, kNear);
        lookThrough(begin, position - begin + kNear);
    }

    void lookThrough(uint64_t begin, uint64_t size) {
        std::vector<uint8_t> bytes(size_t(std::min(size, mWalk.end() - std::min(mWalk.end(), begin))));
        const ssize_t got = bytes.empty() ? 0 : mSource->readAt(off64_t(begin), bytes.data(), bytes.size());
        bytes.resize(size_t(std::max<ssize_t>(got, 0)));
        auto at = bytes.begin();
        while ((at = std::search(at, bytes.end(), std::begin(kCuesId), std::end(kCuesId))) != bytes.end()) {
            const uint64_t position = begin + uint64_t(at++ - bytes.begin());
            if (!mPlaces.found && holdsPoints(position)) mPlaces.found = position;
        }
    }

    bool holdsPoints(uint64_t position) const {
        CMatroskaFile file(mSource);
        const sp<CMatroskaNode> root = new CMatroskaNode(&file);
        file.SeekTo(position);
        const sp<CMatroskaNode> cues = new CMatroskaNode(root.get());
        if (!cues->IsValid() || cues->Id() != id::kCues) return false;
        const sp<CMatroskaNode> point = cues->Child(id::kCuePoint, true);
        return point != nullptr && point->Child(id::kCueTrackPositions, true) != nullptr;
    }

    struct Seek {
        uint64_t offset = 0;
        std::optional<uint32_t> id;
        std::optional<uint64_t> position;
    };

    const sp<android::DataSource> mSource;
    ElementWalk mWalk;
    CuesPlaces mPlaces;
    std::vector<Gap> mGaps;
    Seek mSeek;  // that the walk is in
    bool mHasSegment = false;
};

}  // namespace

CuesPlaces findCues(const sp<android::DataSource>& source) {
    MuteLog mute;
    return Search(source).run();
}

}  // namespace mkvx
