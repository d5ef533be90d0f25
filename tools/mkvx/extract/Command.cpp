// mkvx extract FILE: one track as a stream or file that ordinary tools open.
#include <fmt/format.h>
#include <media/stagefright/MetaData.h>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "base/Text.h"
#include "cli/Command.h"
#include "cli/SharedOptions.h"
#include "device/Pass.h"
#include "device/UnitProgress.h"
#include "extract/Facts.h"
#include "extract/Report.h"
#include "extract/Writer.h"
#include "matroska/MetaDataKeys.h"

namespace mkvx {
namespace {

struct Options {
    std::string file;
    size_t track = 0;
    std::string out;
    ProgressStyle progress = ProgressStyle::kLine;
    Format format = Format::kTable;
};

ExtractUnit unitOf(android::MediaBuffer& buffer) {
    const android::sp<android::MetaData> meta = buffer.meta_data();
    ExtractUnit unit;
    unit.data = static_cast<const uint8_t*>(buffer.data()) + buffer.range_offset();
    unit.size = buffer.range_length();
    meta->findInt64(android::kKeyTime, &unit.timeUs);
    meta->findInt64(android::kKeySubtitleEnd, &unit.endUs);
    return unit;
}

ExtractedTrack extract(const Session& session, const TrackInfo& track, ProgressStyle style,
                       ExtractWriter& writer, ExtractFile& out) {
    UnitProgress progress(out.path(), style, 1);
    progress.beginPass(track.durationUs.value_or(0));
    ExtractedTrack done{session.info().path, track.index, out.path(), writer.form()};
    writer.begin();
    done.unreadable = passOver(session, track, [&](const PassedUnit& passed) {
        const ExtractUnit unit = unitOf(passed.buffer);
        writer.write(unit);
        ++done.units;
        progress.reach(unit.timeUs, unit.size);
    });
    progress.hide();
    if (done.unreadable > 0)
        fmt::print(stderr, "mkvx: {}: track {}: {} units could not be read\n", session.info().path,
                   track.index, done.unreadable);
    if (done.units == 0) throwIfInterrupted(session.info().path);
    if (done.units == 0) throw ExtractRefusal("it delivers no unit");
    writer.finish();
    out.close();
    done.bytes = out.size();
    return done;
}

int run(const Globals& globals, const Options& options) {
    const Session session(loadPlugin(globals.plugin), options.file, globals.source);
    const TrackInfo& track = requireTrack(session.info(), options.track);
    requireOtherFile(options.file, options.out);
    const ExtractTrack facts = factsOf(session, track);
    ExtractFile out(options.out);
    try {
        const ExtractWriterPtr writer = makeExtractWriter(facts, out);
        const ExtractedTrack done = extract(session, track, options.progress, *writer, out);
        renderExtracted(done, options.format, stdout);
        throwIfInterrupted(options.file,
                           fmt::format("{}, which {} holds", counted(done.units, "unit"), options.out));
    } catch (const ExtractRefusal& refusal) {
        throw FileFailure(options.file, fmt::format("track {}: {}", track.index, printable(refusal.what())));
    }
    return kExitDone;
}

}  // namespace

void addExtractCommand(CommandLine& line, const Globals& globals) {
    auto options = std::make_shared<Options>();
    Arguments command = line.command("extract", "One track as a stream or file that ordinary tools open");
    command.value("FILE", options->file, "The file to read").required();
    command.value("--track", options->track, "The track with this index (from 0, as info shows it)")
        .required();
    command.value("-o,--output", options->out, "The file to write").required();
    addProgressOption(command, options->progress);
    addFormatOption(command, options->format, {{"text", Format::kTable}, {"json", Format::kJson}});
    command.footer("Example: mkvx extract --track 1 -o film.aac film.mkv");
    command.action([&globals, options] { return run(globals, *options); });
}

}  // namespace mkvx
