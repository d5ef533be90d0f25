#include "FrameIndex.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace bench {
namespace {

enum : uint32_t {
    kSegment = 0x18538067,
    kInfo = 0x1549A966,
    kTimestampScale = 0x2AD7B1,
    kDuration = 0x4489,
    kTracks = 0x1654AE6B,
    kTrackEntry = 0xAE,
    kTrackNumber = 0xD7,
    kTrackType = 0x83,
    kEncodings = 0x6D80,
    kEncoding = 0x6240,
    kCompression = 0x5034,
    kAlgorithm = 0x4254,
    kSettings = 0x4255,
    kCluster = 0x1F43B675,
    kTimestamp = 0xE7,
    kSimpleBlock = 0xA3,
    kBlockGroup = 0xA0,
    kBlock = 0xA1,
    kReferenceBlock = 0xFB,
};

}  // namespace

// A stretch of the file that is eaten from its front.
class FrameIndex::Span {
  public:
    Span(const uint8_t* base, uint64_t begin, uint64_t end) : mBase(base), mAt(begin), mEnd(end) {}

    uint64_t begin() const { return mAt; }
    uint64_t size() const { return mEnd - mAt; }
    bool isEmpty() const { return mAt >= mEnd; }
    const uint8_t* data() const { return mBase + mAt; }

    Span take(uint64_t n) {
        if (n > size()) throw std::runtime_error("the benchmark's own index needs an undamaged file");
        mAt += n;
        return Span(mBase, mAt - n, mAt);
    }
    uint64_t number(uint64_t bytes) {
        uint64_t value = 0;
        const uint8_t* next = take(bytes).data();
        for (; bytes > 0; --bytes) value = value << 8 | *next++;
        return value;
    }
    uint64_t number() { return number(size()); }
    double real() {
        const bool isShort = size() == 4;
        const uint64_t bits = number();
        const auto low = static_cast<uint32_t>(bits);
        float single;
        double wide;
        std::memcpy(&single, &low, sizeof single);
        std::memcpy(&wide, &bits, sizeof wide);
        return isShort ? single : wide;
    }
    // The length of the variable-length number in front.
    unsigned width() const { return isEmpty() || *data() == 0 ? 9 : __builtin_clz(*data()) - 23u; }
    uint64_t vint() {
        const unsigned bytes = width();
        return number(bytes) & ((uint64_t{1} << 7 * bytes) - 1);
    }
    int64_t signedVint() {
        const unsigned bytes = width();
        return static_cast<int64_t>(vint()) - ((int64_t{1} << (7 * bytes - 1)) - 1);
    }
    // Calls visit(id, payload) for each child.
    template <typename Visit>
    void children(Visit visit) {
        while (!isEmpty()) {
            const auto id = static_cast<uint32_t>(number(width()));
            const uint64_t length = vint();
            visit(id, take(length));
        }
    }

  private:
    const uint8_t* mBase;
    uint64_t mAt, mEnd;
};

FrameIndex::FrameIndex(const Source& source) {
    off64_t size = 0;
    source->getSize(&size);
    mBytes.resize(static_cast<size_t>(size));
    source->readAt(0, mBytes.data(), mBytes.size());
    Span(mBytes.data(), 0, mBytes.size()).children([this](uint32_t id, Span payload) {
        if (id == kSegment) readSegment(payload);
    });
    std::vector<uint8_t>().swap(mBytes);
}

int64_t FrameIndex::durationUs() const {
    return static_cast<int64_t>(mDuration * static_cast<double>(mScale) / 1000);
}

void FrameIndex::readSegment(Span segment) {
    segment.children([this](uint32_t id, Span payload) {
        if (id != kCluster) mHead.emplace_back(payload.begin(), payload.size());
        if (id == kInfo) readInfo(payload);
        if (id == kCluster) readCluster(payload);
        if (id != kTracks) return;
        payload.children([this](uint32_t childId, Span entry) {
            if (childId == kTrackEntry) readTrack(entry);
        });
    });
}

void FrameIndex::readInfo(Span info) {
    info.children([this](uint32_t id, Span payload) {
        if (id == kTimestampScale) mScale = payload.number();
        if (id == kDuration) mDuration = payload.real();
    });
}

void FrameIndex::readTrack(Span entry) {
    IndexedTrack track;
    entry.children([&](uint32_t id, Span payload) {
        if (id == kTrackNumber) mTrackOfNumber[payload.number()] = static_cast<uint16_t>(mTracks.size());
        if (id == kTrackType) track.isVideo = payload.number() == 1;
        if (id == kEncodings)
            payload.children([&](uint32_t, Span encoding) { readEncoding(encoding, &track); });
    });
    mTracks.push_back(track);
}

void FrameIndex::readEncoding(Span encoding, IndexedTrack* track) {
    encoding.children([&](uint32_t id, Span compression) {
        if (id != kCompression) return;
        track->encoding = IndexedTrack::Encoding::kZlib;  // where the algorithm is not said
        compression.children([&](uint32_t childId, Span payload) {
            if (childId == kAlgorithm && payload.number() == 3)
                track->encoding = IndexedTrack::Encoding::kRemovedHeader;
            if (childId == kSettings) track->header.assign(payload.data(), payload.data() + payload.size());
        });
    });
}

void FrameIndex::readCluster(Span cluster) {
    int64_t time = 0;
    cluster.children([&](uint32_t id, Span payload) {
        if (id == kTimestamp) time = static_cast<int64_t>(payload.number());
        if (id == kSimpleBlock) readBlock(payload, time, true);
        if (id == kBlockGroup) readGroup(payload, time);
    });
}

void FrameIndex::readGroup(Span group, int64_t clusterTime) {
    const size_t first = mFrames.size();
    bool hasReference = false;
    group.children([&](uint32_t id, Span payload) {
        if (id == kBlock) readBlock(payload, clusterTime, false);
        if (id == kReferenceBlock) hasReference = true;
    });
    for (size_t i = first; i < mFrames.size(); ++i) mFrames[i].isKey = !hasReference;
}

void FrameIndex::readBlock(Span block, int64_t clusterTime, bool isSimple) {
    const uint64_t number = block.vint();
    const auto delta = static_cast<int16_t>(block.number(2));
    const uint64_t flags = block.number(1), lacing = flags >> 1 & 3;
    std::vector<uint64_t> sizes;  // of all frames but the last
    if (lacing != 0) sizes.resize(block.number(1));
    for (size_t i = 0; i < sizes.size() && lacing != 2; ++i) {
        if (lacing == 3) {
            sizes[i] = i == 0 ? block.vint() : sizes[i - 1] + static_cast<uint64_t>(block.signedVint());
        } else {
            for (uint64_t part = 255; part == 255; sizes[i] += part) part = block.number(1);
        }
    }
    if (lacing == 2) std::fill(sizes.begin(), sizes.end(), block.size() / (sizes.size() + 1));
    const auto track = mTrackOfNumber.find(number);
    if (track == mTrackOfNumber.end()) return;
    const int64_t timeUs = (clusterTime + delta) * static_cast<int64_t>(mScale) / 1000;
    const bool isKey = isSimple && (flags & 0x80) != 0;
    for (size_t i = 0; i <= sizes.size(); ++i) {
        const uint64_t size = i < sizes.size() ? sizes[i] : block.size();
        addFrame(block.take(size), timeUs, track->second, isKey, i == 0);
    }
}

void FrameIndex::addFrame(Span frame, int64_t timeUs, uint16_t track, bool isKey, bool beginsBlock) {
    const auto stored = static_cast<uint32_t>(frame.size());
    uint32_t size = stored + static_cast<uint32_t>(mTracks[track].header.size());
    if (mTracks[track].encoding == IndexedTrack::Encoding::kZlib) {
        std::vector<uint8_t> plain(1 << 20);
        uLongf length = plain.size();
        if (uncompress(plain.data(), &length, frame.data(), stored) != Z_OK)
            throw std::runtime_error("a frame of the benchmark's corpus does not inflate");
        size = static_cast<uint32_t>(length);
    }
    mFrames.push_back({frame.begin(), stored, size, timeUs, track, isKey, beginsBlock});
}

}  // namespace bench
