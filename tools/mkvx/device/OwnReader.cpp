#include "device/OwnReader.h"

#include <media/stagefright/MediaBuffer.h>

#include "base/Log.h"
#include "matroska/MatroskaExtExtractor.h"
#include "matroska/MatroskaExtIterator.h"
#include "matroska/reader/MatroskaReader.h"

namespace mkvx {
namespace {

TrackKind kindOf(uint32_t trackType) {
    switch (trackType) {
        case 1:
            return TrackKind::kVideo;
        case 2:
            return TrackKind::kAudio;
        default:
            return TrackKind::kSubtitle;  // 17, the only other kind that is offered
    }
}

class IteratorTwin : public TwinCursor {
  public:
    IteratorTwin(MatroskaExtReader::CMatroskaFile* file, uint32_t trackNumber)
        : mIterator(file, 0, 0, trackNumber, nullptr) {
        MuteLog mute;
        mIterator.reset();
    }

    void step() override {
        MuteLog mute;
        android::MediaBuffer* buffer = nullptr;
        if (mIterator.read(&buffer, nullptr) == android::OK && buffer != nullptr) buffer->release();
    }

    bool atEnd() const override { return mIterator.AtEnd(); }
    uint64_t position() const override { return mIterator.LastPosition(); }

  private:
    // Built without an extractor, so it leaves the subtitle queue alone.
    android::MatroskaExtIterator mIterator;
};

}  // namespace

struct OwnReader::State {
    android::sp<android::MatroskaExtExtractor> extractor;
};

OwnReader::OwnReader(const android::sp<android::DataSource>& source) : mState(new State) {
    MuteLog mute;
    mState->extractor = new android::MatroskaExtExtractor(source);
}

OwnReader::~OwnReader() {
    MuteLog mute;
    mState->extractor.clear();
}

std::vector<OfferedTrack> OwnReader::offered() const {
    std::vector<OfferedTrack> out;
    const auto& tracks = mState->extractor->Tracks();
    for (size_t i = 0; i < tracks.size(); ++i) out.push_back({tracks[i].mTrackNum, kindOf(tracks[i].mType)});
    return out;
}

size_t OwnReader::entryCount() const {
    return mState->extractor->File()->GetTrackCnt();
}

android::sp<android::MatroskaExtExtractor> OwnReader::extractor() const {
    return mState->extractor;
}

uint64_t OwnReader::masterTrack() const {
    return mState->extractor->File()->MasterTrack();
}

std::unique_ptr<TwinCursor> OwnReader::cursor(uint32_t trackNumber) const {
    return std::make_unique<IteratorTwin>(mState->extractor->File(), trackNumber);
}

}  // namespace mkvx
