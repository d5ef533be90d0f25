#include "properties/Readers.h"

#include <media/stagefright/MediaBuffer.h>
#include <media/stagefright/MetaData.h>

#include "matroska/MetaDataKeys.h"

namespace testing_support {

using android::MediaBuffer;
using android::sp;

namespace {

Unit UnitOf(MediaBuffer* buffer) {
    Unit unit;
    const auto* data = static_cast<const uint8_t*>(buffer->data()) + buffer->range_offset();
    unit.bytes.assign(data, data + buffer->range_length());
    const sp<android::MetaData> meta = buffer->meta_data();
    meta->findInt64(android::kKeyTime, &unit.timeUs);
    meta->findInt32(android::kKeyIsSyncFrame, &unit.sync);
    meta->findInt64(android::kKeySubtitleEnd, &unit.endUs);
    return unit;
}

}  // namespace

Readers::Readers(const Bytes& bytes, const std::vector<uint32_t>& tracks, Faults faults, bool takesPieces)
    : mSource(new FaultySource(bytes, faults)), mFile(mSource, takesPieces), mTracks(tracks) {
    OpenWithIndex(&mFile);
    for (uint32_t number : tracks) {
        mIterators.emplace_back(&mFile, 0, 0, number, nullptr);
        mIterators.back().reset();
    }
    mListings.resize(tracks.size());
}

bool Readers::Read(size_t track, const android::MediaSource::ReadOptions* options) {
    MediaBuffer* buffer = nullptr;
    android::MatroskaExtIterator& iterator = mIterators[track];
    Delivery delivery;
    if (iterator.read(&buffer, options) == android::OK) {
        delivery.unit = UnitOf(buffer);
        delivery.unit.bytes = Comparable(std::move(delivery.unit.bytes), mFile.FindTrack(mTracks[track]));
        buffer->release();
    } else {
        if (iterator.AtEnd()) return false;
        delivery.isRefused = true;
    }
    mListings[track].push_back(std::move(delivery));
    return true;
}

std::string Readers::LastLoss() const {
    const auto& losses = mFile.Losses.List();
    if (losses.empty()) return "none";
    return MatroskaExtReader::TextOf(losses.back().kind).identifier +
           (" at " + std::to_string(losses.back().position));
}

std::vector<uint32_t> TracksOf(const Bytes& bytes) {
    MatroskaExtReader::CMatroskaFile file(new FaultySource(bytes));
    OpenWithIndex(&file);
    std::vector<uint32_t> numbers = {kUnknownTrack};
    for (const auto& tracks : file.Segment.Tracks)
        for (const auto& entry : tracks->Entries)
            numbers.push_back(static_cast<uint32_t>(entry->TrackNumber.Get()));
    return numbers;
}

std::vector<Deliveries> PlainListings(const Bytes& bytes, const std::vector<uint32_t>& tracks) {
    std::vector<Deliveries> listings;
    for (uint32_t number : tracks) {
        MatroskaExtReader::CMatroskaFile file(new FaultySource(bytes), false);
        OpenWithIndex(&file);
        listings.push_back(PlainWalk(&file, number).All());
    }
    return listings;
}

}  // namespace testing_support
