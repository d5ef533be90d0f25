// mkvx extract FILE: one track as a stream or file that ordinary tools open.
#include <fmt/format.h>

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

namespace mkvx {
namespace {

struct Options {
    std::string file;
    std::optional<TrackChoice> track;
    std::string out;
    ProgressStyle progress = ProgressStyle::kLine;
    Format format = Format::kTable;
};

ExtractUnit unitOf(const TrackInfo& track, android::MediaBuffer& buffer) {
    const Unit described = describeUnit(track, buffer);
    ExtractUnit unit;
    unit.data = static_cast<const uint8_t*>(buffer.data()) + buffer.range_offset();
    unit.size = described.size;
    unit.timeUs = described.timeUs;
    unit.endUs = described.endUs.value_or(0);
    return unit;
}

ExtractedTrack extract(const Session& session, const TrackInfo& track, ProgressStyle style,
                       ExtractWriter& writer, ExtractFile& out) {
    UnitProgress progress(out.path(), style, 1);
    progress.beginPass(track.durationUs.value_or(0));
    ExtractedTrack done{session.info().path, track.index, out.path(), writer.form()};
    writer.begin();
    done.unreadable = passOver(session, track, [&](const PassedUnit& passed) {
        const ExtractUnit unit = unitOf(track, passed.buffer);
        writer.write(unit);
        ++done.units;
        progress.reach(unit.timeUs, unit.size);
    });
    progress.hide();
    if (done.unreadable > 0)
        fmt::print(stderr, "mkvx: {}: index {}: {} units could not be read\n", session.info().path,
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
    const TrackInfo& track = requireTrack(session.info(), *options.track);
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
        throw FileFailure(options.file, fmt::format("index {}: {}", track.index, printable(refusal.what())));
    }
    return kExitDone;
}

}  // namespace

void addExtractCommand(CommandLine& line, const Globals& globals) {
    auto options = std::make_shared<Options>();
    Arguments command = line.command("extract", "One track as a stream or file that ordinary tools open");
    command.value("FILE", options->file, "The file to read").required();
    addTrackOption(command, options->track, "The track to write").required();
    command.value("-o,--output", options->out, "The file to write").required();
    addProgressOption(command, options->progress);
    addFormatOption(command, options->format, {{"text", Format::kTable}, {"json", Format::kJson}});
    command.footer("Example: mkvx extract --track 1 -o film.aac film.mkv");
    command.action([&globals, options] { return run(globals, *options); });
}

}  // namespace mkvx
