// mkvx decode FILE: plays the part of the device's decoders, with nothing but what the plug-in hands out.
#include <fmt/format.h>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "base/Text.h"
#include "cli/Command.h"
#include "cli/SharedOptions.h"
#include "decode/Run.h"
#include "device/Session.h"

namespace mkvx {
namespace {

struct Options {
    std::string file;
    std::optional<TrackChoice> track;
    DecodeOptions decode;
    Format format = Format::kTable;
};

std::string interruptedAt(const DecodedFile& decoded) {
    size_t units = 0;
    for (const DecodedTrack& track : decoded.tracks) units += track.units;
    return fmt::format("{} of {}", counted(units, "unit"), counted(decoded.tracks.size(), "track"));
}

void checkTrack(const Options& options, const TrackInfo* only) {
    if (only != nullptr && only->kind == TrackKind::kSubtitle)
        throw UsageFailure(
            fmt::format("{}: index {} holds subtitles, which need no decoder (mkvx extract "
                        "writes them)",
                        options.file, only->index));
}

std::string chooseAac(const std::string& text, AacChoice& aac) {
    aac = text == "ffmpeg" ? AacChoice::kFfmpeg : AacChoice::kDevice;
    return {};
}

int run(const Globals& globals, const Options& options) {
    const Session session(loadPlugin(globals.plugin), options.file, globals.source);
    const TrackInfo* only = chosenTrack(session.info(), options.track);
    checkTrack(options, only);
    DecodeRun decoding(session, only, options.decode);
    const DecodedFile& decoded = decoding.run();
    print(decoded, options.format, stdout);
    decoding.completeOutput();
    throwIfInterrupted(options.file, interruptedAt(decoded));
    return kExitDone;
}

}  // namespace

void addDecodeCommand(CommandLine& line, const Globals& globals) {
    auto options = std::make_shared<Options>();
    Arguments command =
        line.command("decode", "Decode every track from the plug-in's configuration keys and units alone");
    command.value("FILE", options->file, "The file to read").required();
    addTrackOption(command, options->track, "Only this track");
    command.value("--frames", options->decode.frames, "Stop after this many decoded frames per track")
        .positive();
    command.value("-o", options->decode.output,
                  "Write the picture at the thumbnail time as PNG, or a sound track as WAV");
    command
        .text(
            "--aac", [options](const std::string& text) { return chooseAac(text, options->decode.aac); },
            "AAC by the decoder library that devices use, or by ffmpeg's")
        .oneOf({"device", "ffmpeg"})
        .showDefault("device");
    addProgressOption(command, options->decode.progress);
    addFormatOption(command, options->format, {{"table", Format::kTable}, {"json", Format::kJson}});
    command.footer("Example: mkvx decode -o frame.png film.mkv");
    command.action([&globals, options] { return run(globals, *options); });
}

}  // namespace mkvx
