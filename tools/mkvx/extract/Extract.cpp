#include "extract/Extract.h"

#include <fmt/format.h>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "base/Terminal.h"
#include "base/Text.h"
#include "device/LaceSizes.h"
#include "device/Pass.h"
#include "device/UnitProgress.h"
#include "extract/Facts.h"
#include "extract/Writer.h"

namespace mkvx {
namespace {

ExtractUnit unitOf(const TrackInfo& track, android::MediaBuffer& buffer) {
    const Unit described = describeUnit(track, buffer);
    ExtractUnit unit;
    unit.data = static_cast<const uint8_t*>(buffer.data()) + buffer.range_offset();
    unit.size = described.size;
    unit.timeUs = described.timeUs;
    unit.endUs = described.endUs.value_or(0);
    return unit;
}

// The sizes in a block are of what it stores, which an encoding makes something else of.
std::vector<uint64_t> framesOf(android::DataSource& bytes, const ExtractTrack& track,
                               const PassedUnit& passed) {
    const size_t size = passed.buffer.range_length();
    auto sizes = laceSizes(bytes, passed.position, size);
    if (sizes && (sizes->size() == 1 || !track.hasEncodedFrames)) return std::move(*sizes);
    throw ExtractRefusal(fmt::format(
        "the block at {} holds several frames, and where each of them ends cannot be told", passed.position));
}

// Counts into `done`.
void writeUnits(const Session& session, const ExtractTrack& facts, ProgressStyle style, ExtractWriter& writer,
                ExtractedTrack& done) {
    const TrackInfo& track = facts.info;
    const android::sp<android::DataSource> bytes = session.newBytes();
    UnitProgress progress(done.output, style, 1);
    progress.beginPass(track.durationUs.value_or(0));
    done.unreadable = passOver(session, track, [&](const PassedUnit& passed) {
        ExtractUnit unit = unitOf(track, passed.buffer);
        if (writer.wantsFrames()) unit.frames = framesOf(*bytes, facts, passed);
        writer.write(unit);
        ++done.units;
        progress.reach(unit.timeUs, unit.size);
    });
    progress.hide();
}

void tellUnreadable(const ExtractedTrack& done) {
    if (done.unreadable > 0)
        tell(fmt::format("{}: index {}: {} units could not be read", done.file, done.track, done.unreadable));
}

ExtractedTrack extract(const Session& session, const TrackInfo& track, const std::string& output,
                       ProgressStyle style) {
    const ExtractTrack facts = factsOf(session, track);
    ExtractFile out(output);
    const ExtractWriterPtr writer = makeExtractWriter(facts, out);
    ExtractedTrack done{session.info().path, track.index, output, writer->form()};
    writer->begin();
    writeUnits(session, facts, style, *writer, done);
    tellUnreadable(done);
    if (done.units == 0) throwIfInterrupted(done.file);
    if (done.units == 0) throw ExtractRefusal("it delivers no unit");
    writer->finish();
    out.close();
    done.bytes = out.size();
    return done;
}

}  // namespace

ExtractedTrack extractTrack(const Session& session, const TrackInfo& track, const std::string& output,
                            ProgressStyle progress) {
    try {
        return extract(session, track, output, progress);
    } catch (const ExtractRefusal& refusal) {
        throw FileFailure(session.info().path,
                          fmt::format("index {}: {}", track.index, printable(refusal.what())));
    }
}

}  // namespace mkvx
