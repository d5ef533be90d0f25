// mkvx decode FILE: plays the part of the device's decoders, with nothing but what the plug-in hands out.
#include <fmt/format.h>
#include <algorithm>
#include <limits>

extern "C" {
#include <libavutil/frame.h>
}

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "base/Text.h"
#include "cli/Command.h"
#include "cli/SharedOptions.h"
#include "decode/Engine.h"
#include "decode/Output.h"
#include "decode/Report.h"
#include "device/Session.h"
#include "device/TrackReader.h"
#include "device/UnitProgress.h"

namespace mkvx {
namespace {

struct Options {
    std::string file;
    std::optional<size_t> track;
    size_t frames = std::numeric_limits<size_t>::max();  // per track
    std::string output;
    Format format = Format::kTable;
    ProgressStyle progress = ProgressStyle::kLine;
};

// One track from its first unit on.
class TrackDecoding {
  public:
    // `extra` may be null; it takes the frames too and is not owned.
    TrackDecoding(const TrackInfo& track, size_t limit, FrameSink* extra, UnitProgress& progress)
        : mLimit(limit), mExtra(extra), mProgress(progress) {
        mProgress.beginPass(track.durationUs.value_or(0));
        mResult.index = track.index;
        mResult.kind = track.kind;
        mResult.mime = track.mime;
    }

    DecodedTrack run(const android::sp<android::MediaSource>& source) {
        try {
            Decoder decoder(decoderSetup(*source->getFormat()),
                            [this](const AVFrame& frame) { take(frame); });
            mResult.decoder = decoder.name();
            decode(source, decoder);
            mResult.errors = decoder.errors();
            mResult.problem = decoder.firstError();
            if (!wasInterrupted()) mResult.sha1 = mHash.hex();  // else it is the hash of some of the frames
            if (wasInterrupted() && mResult.problem.empty()) mResult.problem = "interrupted";
        } catch (const DecodeProblem& problem) {
            mResult.problem = problem.what();
        }
        return mResult;
    }

  private:
    bool full() const { return mResult.frames >= mLimit; }

    void decode(const android::sp<android::MediaSource>& source, Decoder& decoder) {
        TrackReader reader(source);
        while (!full()) {
            const BufferPtr buffer = reader.next();
            if (!buffer) return decoder.finish();
            const android::sp<android::MetaData> meta = buffer->meta_data();
            int64_t timeUs = 0;
            int32_t sync = 0;
            meta->findInt64(android::kKeyTime, &timeUs);
            meta->findInt32(android::kKeyIsSyncFrame, &sync);
            const auto* data = static_cast<const uint8_t*>(buffer->data()) + buffer->range_offset();
            decoder.feed(data, buffer->range_length(), timeUs, sync != 0);
            ++mResult.units;
            mProgress.reach(timeUs, buffer->range_length());
        }
    }

    void take(const AVFrame& frame) {
        if (full()) return;
        ++mResult.frames;
        mResult.samples += uint64_t(frame.nb_samples);
        mHash.take(frame);
        if (mExtra != nullptr) mExtra->take(frame);
    }

    size_t mLimit;
    FrameSink* mExtra;
    UnitProgress& mProgress;
    FrameHash mHash;
    DecodedTrack mResult;
};

bool endsWith(const std::string& text, const std::string& end) {
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

const TrackInfo* firstOf(const std::vector<TrackInfo>& tracks, TrackKind kind) {
    for (const TrackInfo& track : tracks)
        if (track.kind == kind) return &track;
    return nullptr;
}

// The track whose frames go to the output: the chosen one; else the first picture track, or the first sound
// track for a name that ends in .wav or where there is nothing else.
const TrackInfo& outputTrack(const Options& options, const std::vector<TrackInfo>& tracks) {
    if (options.track) return tracks[*options.track];
    const TrackInfo* video = firstOf(tracks, TrackKind::kVideo);
    const TrackInfo* audio = firstOf(tracks, TrackKind::kAudio);
    const bool wantsSound = endsWith(options.output, ".wav");
    const TrackInfo* chosen = (wantsSound && audio != nullptr) || video == nullptr ? audio : video;
    if (chosen == nullptr) throw FileFailure(options.file, "has no track to decode (mkvx check says why)");
    return *chosen;
}

std::unique_ptr<FrameSink> makeOutput(const TrackInfo& track, const std::string& path) {
    if (track.kind == TrackKind::kAudio) return makeSoundFile(path);
    return makePictureFile(path, track.thumbnailUs.value_or(std::numeric_limits<int64_t>::min()));
}

std::string interruptedAt(const std::vector<DecodedTrack>& results) {
    size_t units = 0;
    for (const DecodedTrack& track : results) units += track.units;
    return fmt::format("{} of {}", counted(units, "unit"), counted(results.size(), "track"));
}

void checkTrack(const Options& options, const FileInfo& info) {
    if (!options.track) return;
    if (requireTrack(info, *options.track).kind == TrackKind::kSubtitle)
        throw UsageFailure(
            fmt::format("{}: track {} holds subtitles, which need no decoder (mkvx extract "
                        "writes them)",
                        options.file, *options.track));
}

int run(const Globals& globals, const Options& options) {
    const Session session(loadPlugin(globals.plugin), options.file, globals.source);
    const std::vector<TrackInfo>& tracks = session.info().tracks;
    checkTrack(options, session.info());
    const TrackInfo* toOutput = options.output.empty() ? nullptr : &outputTrack(options, tracks);
    const std::unique_ptr<FrameSink> output = toOutput ? makeOutput(*toOutput, options.output) : nullptr;
    const auto isWanted = [&](const TrackInfo& track) {
        return track.kind != TrackKind::kSubtitle && (!options.track || *options.track == track.index);
    };
    UnitProgress progress(options.file, options.progress,
                          size_t(std::count_if(tracks.begin(), tracks.end(), isWanted)));
    std::vector<DecodedTrack> results;
    untilInterrupted([&] {
        for (const TrackInfo& track : tracks) {
            if (!isWanted(track) || wasInterrupted()) continue;
            FrameSink* const sink = &track == toOutput ? output.get() : nullptr;
            TrackDecoding decoding(track, options.frames, sink, progress);
            results.push_back(decoding.run(session.newSource(track.index)));
        }
    });
    progress.hide();
    renderDecoded(results, options.format, stdout);
    if (output && (!wasInterrupted() || output->hasFrames())) output->finish();
    throwIfInterrupted(options.file, interruptedAt(results));
    return kExitDone;
}

}  // namespace

void addDecodeCommand(CommandLine& line, const Globals& globals) {
    auto options = std::make_shared<Options>();
    Arguments command =
        line.command("decode", "Decode every track from the plug-in's configuration keys and units alone");
    command.value("FILE", options->file, "The file to read").required();
    command.value("--track", options->track, "Only the track with this index (from 0, as info shows it)");
    command.value("--frames", options->frames, "Stop after this many decoded frames per track").positive();
    command.value("-o", options->output,
                  "Write the picture at the thumbnail time as PNG, or a sound track as WAV");
    addProgressOption(command, options->progress);
    addFormatOption(command, options->format, {{"table", Format::kTable}, {"json", Format::kJson}});
    command.footer("Example: mkvx decode -o frame.png film.mkv");
    command.action([&globals, options] { return run(globals, *options); });
}

}  // namespace mkvx
