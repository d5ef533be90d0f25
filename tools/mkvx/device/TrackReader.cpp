#include "device/TrackReader.h"

#include <media/stagefright/MetaData.h>
#include <stdexcept>

#include "base/Interrupt.h"
#include "device/MetaDataKeys.h"

namespace mkvx {
TrackReader::TrackReader(const android::sp<android::MediaSource>& source, std::unique_ptr<TwinCursor> twin)
    : mSource(source), mTwin(std::move(twin)) {
    if (mSource == nullptr || mSource->start() != android::OK)
        throw std::runtime_error("a track's source does not start");
}

TrackReader::~TrackReader() {
    mSource->stop();
}

BufferPtr TrackReader::readOnce() {
    android::MediaBuffer* buffer = nullptr;
    if (mSource->read(&buffer) == android::OK && buffer != nullptr) return BufferPtr(buffer);
    return nullptr;
}

BufferPtr TrackReader::next() {
    while (true) {
        BufferPtr buffer = readOnce();
        if (wasInterrupted()) return nullptr;  // what came may be made of reads that failed
        if (mTwin) mTwin->step();
        if (buffer || !mTwin || mTwin->atEnd()) return buffer;
        ++mUnreadable;
    }
}

bool TrackReader::endedEarly() {
    return !wasInterrupted() && readOnce() != nullptr;
}

Unit describeUnit(const TrackInfo& track, android::MediaBuffer& buffer) {
    const android::sp<android::MetaData> meta = buffer.meta_data();
    Unit unit;
    unit.track = track.index;
    unit.number = track.number;
    int32_t sync = 0;
    int64_t endUs = 0;
    meta->findInt64(android::kKeyTime, &unit.timeUs);
    unit.sync = meta->findInt32(android::kKeyIsSyncFrame, &sync) && sync != 0;
    if (track.kind == TrackKind::kSubtitle && meta->findInt64(android::kKeySubtitleEnd, &endUs))
        unit.endUs = endUs;
    unit.size = buffer.range_length();
    return unit;
}

Unit describeUnit(const TrackInfo& track, android::MediaBuffer& buffer, Sha1& sha1) {
    Unit unit = describeUnit(track, buffer);
    unit.sha1 = sha1.hex(static_cast<const uint8_t*>(buffer.data()) + buffer.range_offset(), unit.size);
    return unit;
}

}  // namespace mkvx
