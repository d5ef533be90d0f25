#include "seek/Landing.h"

#include <fmt/format.h>
#include <algorithm>

#include "base/Failure.h"
#include "device/TrackReader.h"

namespace mkvx {

void ReadRanges::note(uint64_t begin, uint64_t end) {
    mLastBegin = begin;
    if (!mRanges.empty()) {
        ByteRange& last = mRanges.back();
        const bool isNear = begin <= last.end + kJoined && end + kJoined >= last.begin;
        if (isNear || mRanges.size() == kMost) {
            last = {std::min(last.begin, begin), std::max(last.end, end)};
            return;
        }
    }
    mRanges.push_back({begin, end});
}

CountedOpening::CountedOpening(const Session& session)
    : bytes(new CountingSource(session.newBytes())),
      extractor(session.plugin().open(bytes, nullptr)),
      work(bytes->reads() + bytes->bytes() / 32) {}

LandingProbe::LandingProbe(const Session& session, const TrackInfo& track)
    : LandingProbe(CountedOpening(session), session, track) {}

LandingProbe::LandingProbe(const CountedOpening& opening, const Session& session, const TrackInfo& track)
    : mTrack(track), mBytes(opening.bytes) {
    if (opening.extractor != nullptr) mSource = opening.extractor->getTrack(track.index);
    if (mSource == nullptr || mSource->start() != android::OK)
        throw FileFailure(session.info().path,
                          fmt::format("the source of index {} does not start", track.index));
    mBytes->observe([this](off64_t offset, size_t, ssize_t got) {
        if (got > 0) mRanges.note(uint64_t(offset), uint64_t(offset) + uint64_t(got));
    });
}

LandingProbe::~LandingProbe() {
    mSource->stop();
    mBytes->observe(nullptr);
}

Landing LandingProbe::read(const android::MediaSource::ReadOptions* options) {
    const uint64_t readsBefore = mBytes->reads(), bytesBefore = mBytes->bytes();
    mRanges.clear();
    android::MediaBuffer* buffer = nullptr;
    Landing landing;
    if (mSource->read(&buffer, options) == android::OK && buffer != nullptr) {
        const BufferPtr owned(buffer);
        landing.unit = describeUnit(mTrack, *buffer, mSha1);
    }
    landing.reads = mBytes->reads() - readsBefore;
    landing.readBytes = mBytes->bytes() - bytesBefore;
    landing.position = mRanges.lastBegin();
    landing.ranges = mRanges.ranges();
    return landing;
}

}  // namespace mkvx
