// libwebm's webm_parser, which calls back for each element. It keeps no index, so this program keeps the cue
// points itself; it does not undo content encodings.
#include <webm/callback.h>
#include <webm/webm_parser.h>

#include <algorithm>
#include <cstdlib>

#include "Peer.h"

namespace bench {
namespace {

using webm::Status;

const Status kGoOn(Status::kOkCompleted);
const Status kPause(Status::kWouldBlock);
const Status kEnd(Status::kEndOfFile);

class SourceReader : public webm::Reader {
  public:
    explicit SourceReader(const Source& source) : mSource(source) { mSource->getSize(&mSize); }

    void moveTo(uint64_t position) { mPosition = position; }

    Status Read(size_t size, uint8_t* out, uint64_t* got) override {
        const ssize_t n = mSource->readAt(static_cast<off64_t>(mPosition), out, size);
        return advance(n > 0 ? static_cast<uint64_t>(n) : 0, size, got);
    }
    Status Skip(uint64_t size, uint64_t* got) override {
        return advance(std::min(size, static_cast<uint64_t>(mSize) - mPosition), size, got);
    }
    uint64_t Position() const override { return mPosition; }

  private:
    Status advance(uint64_t done, uint64_t wanted, uint64_t* got) {
        mPosition += done;
        *got = done;
        return done == wanted ? kGoOn : done > 0 ? Status(Status::kOkPartial) : kEnd;
    }

    Source mSource;
    off64_t mSize = 0;
    uint64_t mPosition = 0;
};

class WebmParser : public Peer, private webm::Callback {
  public:
    explicit WebmParser(const Source& source) : mReader(source) {}

    bool open(bool forSeeking) override {
        if (!forSeeking) return true;  // reading everything meets the head on its way
        mPhase = Phase::kHead;
        (void)mParser.Feed(this, &mReader);
        if (mCuesAt != 0 && mPoints.empty()) feedFrom(mCuesAt);
        return !mTrackOfNumber.empty();
    }
    bool readAll(Sink& sink) override {
        mSink = &sink;
        mPhase = Phase::kEverything;
        return mParser.Feed(this, &mReader).completed_ok();
    }
    int64_t durationUs() const override { return static_cast<int64_t>(mDuration * double(mScale) / 1000); }
    bool seekAndRead(int64_t timeUs, Sink& sink) override {
        if (mPoints.empty()) return false;
        const uint64_t target = static_cast<uint64_t>(timeUs) * 1000 / mScale;
        auto point = std::upper_bound(mPoints.begin(), mPoints.end(), target,
                                      [](uint64_t time, const Point& p) { return time < p.time; });
        if (point != mPoints.begin()) --point;
        mSink = &sink;
        mPhase = Phase::kOneFrame;
        feedFrom(point->cluster);
        return mPhase == Phase::kDone;
    }

  private:
    enum class Phase { kHead, kEverything, kOneFrame, kDone };
    struct Point {
        uint64_t time, cluster;
    };

    void feedFrom(uint64_t position) {
        mReader.moveTo(position);
        mParser.DidSeek();
        (void)mParser.Feed(this, &mReader);
    }

    Status OnSegmentBegin(const webm::ElementMetadata& element, webm::Action* action) override {
        mSegment = element.position + element.header_size;
        *action = webm::Action::kRead;
        return kGoOn;
    }
    Status OnSeek(const webm::ElementMetadata&, const webm::Seek& entry) override {
        if (entry.id.value() == webm::Id::kCues) mCuesAt = mSegment + entry.position.value();
        return kGoOn;
    }
    Status OnInfo(const webm::ElementMetadata&, const webm::Info& info) override {
        mScale = info.timecode_scale.value();
        mDuration = info.duration.value();
        return kGoOn;
    }
    Status OnTrackEntry(const webm::ElementMetadata&, const webm::TrackEntry& entry) override {
        const size_t number = entry.track_number.value();
        if (number >= mTrackOfNumber.size()) mTrackOfNumber.resize(number + 1, 0);
        mTrackOfNumber[number] = mTracks++;
        const bool isVideo = entry.track_type.value() == webm::TrackType::kVideo;
        if (mTracks == 1 || (isVideo && !mHasVideo)) mSeekNumber = number;
        mHasVideo = mHasVideo || isVideo;
        return kGoOn;
    }
    Status OnCuePoint(const webm::ElementMetadata&, const webm::CuePoint& point) override {
        for (const auto& position : point.cue_track_positions) {
            if (position.value().track.value() != mSeekNumber && mTracks > 0) continue;
            mPoints.push_back({point.time.value(), mSegment + position.value().cluster_position.value()});
        }
        return kGoOn;
    }
    Status OnClusterBegin(const webm::ElementMetadata&, const webm::Cluster& cluster,
                          webm::Action* action) override {
        if (mPhase == Phase::kHead) return kPause;
        mClusterTime = cluster.timecode.value();
        *action = webm::Action::kRead;
        return kGoOn;
    }
    Status OnSimpleBlockBegin(const webm::ElementMetadata&, const webm::SimpleBlock& block,
                              webm::Action* action) override {
        return takeHeader(block, block.is_key_frame, action);
    }
    Status OnBlockBegin(const webm::ElementMetadata&, const webm::Block& block,
                        webm::Action* action) override {
        return takeHeader(block, true, action);
    }
    Status takeHeader(const webm::Block& block, bool isKey, webm::Action* action) {
        mNumber = block.track_number;
        mTimeUs = static_cast<int64_t>((mClusterTime + uint64_t(int64_t{block.timecode})) * mScale / 1000);
        mIsKey = isKey;
        *action = webm::Action::kRead;
        return kGoOn;
    }

    Status OnFrame(const webm::FrameMetadata& frame, webm::Reader* reader, uint64_t* left) override {
        if (mPhase == Phase::kDone) return kPause;
        uint64_t got = 0;
        if (mPhase == Phase::kOneFrame && mNumber != mSeekNumber) {
            const Status status = reader->Skip(*left, &got);
            *left -= got;
            return status;
        }
        auto* bytes = static_cast<uint8_t*>(std::malloc(frame.size + (frame.size == 0)));
        uint64_t size = 0;
        Status status = kGoOn;
        for (; *left > 0 && status.ok(); *left -= got, size += got)
            status = reader->Read(*left, bytes + size, &got);
        mSink->take(mTrackOfNumber[mNumber], bytes, size, mTimeUs, mIsKey);
        std::free(bytes);
        if (mPhase == Phase::kOneFrame) mPhase = Phase::kDone;
        return *left > 0 ? kEnd : kGoOn;
    }

    webm::WebmParser mParser;
    SourceReader mReader;
    Phase mPhase = Phase::kHead;
    Sink* mSink = nullptr;
    std::vector<size_t> mTrackOfNumber;
    std::vector<Point> mPoints;
    size_t mTracks = 0, mSeekNumber = 0, mNumber = 0;
    bool mHasVideo = false, mIsKey = false;
    uint64_t mSegment = 0, mCuesAt = 0, mScale = 1000000, mClusterTime = 0;
    int64_t mTimeUs = 0;
    double mDuration = 0;
};

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
    return bench::peerMain(
        argc, argv, [](const bench::Source& source) { return std::make_unique<bench::WebmParser>(source); });
}
