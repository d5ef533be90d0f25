#include "decode/TrackDecoding.h"

#include <media/stagefright/MetaData.h>

#include "base/Interrupt.h"
#include "device/MetaDataKeys.h"
#include "device/TrackReader.h"

namespace mkvx {
namespace {

UnitHead headOf(android::MediaBuffer& buffer) {
    const android::sp<android::MetaData> meta = buffer.meta_data();
    UnitHead unit;
    int32_t sync = 0;
    meta->findInt64(android::kKeyTime, &unit.timeUs);
    meta->findInt32(android::kKeyIsSyncFrame, &sync);
    unit.isSync = sync != 0;
    return unit;
}

}  // namespace

TrackDecoding::TrackDecoding(const TrackInfo& track, const android::sp<android::MediaSource>& source,
                             const std::string& program, const TrackSetup& setup, UnitProgress& progress)
    : mMostFrames(setup.mostFrames), mSource(source), mProgress(progress), mDecoder(program, setup) {
    mProgress.beginPass(track.durationUs.value_or(0));
    mResult.index = track.index;
    mResult.kind = track.kind;
    mResult.mime = track.mime;
}

DecodedTrack TrackDecoding::run() {
    if (!state().isOver) feedAll();
    takeState();
    return mResult;
}

void TrackDecoding::takeState() {
    mResult.decoder = state().decoder;
    mResult.frames = state().frames;
    mResult.samples = state().samples;
    mResult.problem = state().problem;
    if (state().isOver) return;
    mResult.errors = state().errors;
    if (!wasInterrupted()) mResult.sha1 = state().sha1;  // else it is the hash of some of the frames
    if (wasInterrupted() && mResult.problem.empty()) mResult.problem = "interrupted";
}

void TrackDecoding::feedAll() {
    TrackReader reader(mSource);
    BufferPtr buffer;
    while (!state().isOver && state().frames < mMostFrames && (buffer = reader.next())) feed(*buffer);
    if (!state().isOver) mDecoder.end(buffer == nullptr);
}

void TrackDecoding::feed(android::MediaBuffer& buffer) {
    const UnitHead unit = headOf(buffer);
    const auto* data = static_cast<const uint8_t*>(buffer.data()) + buffer.range_offset();
    mDecoder.feed(unit, data, buffer.range_length());
    if (state().isOver) return;
    ++mResult.units;
    mProgress.reach(unit.timeUs, buffer.range_length());
}

}  // namespace mkvx
