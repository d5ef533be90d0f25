// mkvx decode FILE: plays the part of the device's decoders, with nothing but what the plug-in hands out.
#include <fmt/format.h>
#include <media/stagefright/MetaData.h>
#include <algorithm>
#include <limits>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "base/Text.h"
#include "cli/Command.h"
#include "cli/SharedOptions.h"
#include "decode/DecoderProcess.h"
#include "decode/Report.h"
#include "device/MetaDataKeys.h"
#include "device/Session.h"
#include "device/TrackReader.h"
#include "device/UnitProgress.h"

namespace mkvx {
namespace {

struct Options {
    std::string file;
    std::optional<TrackChoice> track;
    size_t frames = std::numeric_limits<size_t>::max();  // per track
    std::string output;
    Format format = Format::kTable;
    ProgressStyle progress = ProgressStyle::kLine;
};

// Values below 1 say nothing to a decoder.
int32_t numberOf(android::MetaData& format, uint32_t key) {
    int32_t value = 0;
    return format.findInt32(key, &value) && value > 0 ? value : 0;
}

Bytes dataOf(android::MetaData& format, uint32_t key) {
    uint32_t type = 0;
    const void* data = nullptr;
    size_t size = 0;
    if (!format.findData(key, &type, &data, &size) || size == 0) return {};
    const auto* bytes = static_cast<const uint8_t*>(data);
    return Bytes(bytes, bytes + size);
}

TrackSetup setupFrom(android::MetaData& format) {
    TrackSetup setup;
    const char* mime = "";
    format.findCString(android::kKeyMIMEType, &mime);
    setup.mime = mime;
    setup.width = numberOf(format, android::kKeyWidth);
    setup.height = numberOf(format, android::kKeyHeight);
    setup.sampleRate = numberOf(format, android::kKeySampleRate);
    setup.channels = numberOf(format, android::kKeyChannelCount);
    setup.bitsPerSample = numberOf(format, android::kKeyBitsPerSample);
    setup.esds = dataOf(format, android::kKeyESDS);
    setup.avcc = dataOf(format, android::kKeyAVCC);
    setup.hvcc = dataOf(format, android::kKeyHVCC);
    setup.mpeg4Headers = dataOf(format, android::kKeyMpeg4Headers);
    setup.vorbisInfo = dataOf(format, android::kKeyVorbisInfo);
    setup.vorbisBooks = dataOf(format, android::kKeyVorbisBooks);
    return setup;
}

// One track from its first unit on, at most `mostFrames` frames.
class TrackDecoding {
  public:
    TrackDecoding(const TrackInfo& track, const android::sp<android::MediaSource>& source, TrackSetup setup,
                  UnitProgress& progress)
        : mMostFrames(setup.mostFrames), mSource(source), mProgress(progress), mDecoder(setup) {
        mProgress.beginPass(track.durationUs.value_or(0));
        mResult.index = track.index;
        mResult.kind = track.kind;
        mResult.mime = track.mime;
    }

    DecodedTrack run() {
        if (!state().isOver) feedAll();
        mResult.decoder = state().decoder;
        mResult.frames = state().frames;
        mResult.samples = state().samples;
        mResult.problem = state().problem;
        if (state().isOver) return mResult;
        mResult.errors = state().errors;
        if (!wasInterrupted()) mResult.sha1 = state().sha1;  // else it is the hash of some of the frames
        if (wasInterrupted() && mResult.problem.empty()) mResult.problem = "interrupted";
        return mResult;
    }

    bool hasOutput() const { return state().hasOutput; }
    void closeOutput() { mDecoder.closeOutput(); }

  private:
    const TrackState& state() const { return mDecoder.state(); }

    void feedAll() {
        TrackReader reader(mSource);
        BufferPtr buffer;
        while (!state().isOver && state().frames < mMostFrames && (buffer = reader.next())) feed(*buffer);
        if (!state().isOver) mDecoder.end(buffer == nullptr);
    }

    void feed(android::MediaBuffer& buffer) {
        const android::sp<android::MetaData> meta = buffer.meta_data();
        UnitHead unit;
        int32_t sync = 0;
        meta->findInt64(android::kKeyTime, &unit.timeUs);
        meta->findInt32(android::kKeyIsSyncFrame, &sync);
        unit.isSync = sync != 0;
        const auto* data = static_cast<const uint8_t*>(buffer.data()) + buffer.range_offset();
        mDecoder.feed(unit, data, buffer.range_length());
        if (state().isOver) return;
        ++mResult.units;
        mProgress.reach(unit.timeUs, buffer.range_length());
    }

    uint64_t mMostFrames;
    android::sp<android::MediaSource> mSource;
    UnitProgress& mProgress;
    DecoderProcess mDecoder;
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
const TrackInfo& outputTrack(const Options& options, const TrackInfo* only,
                             const std::vector<TrackInfo>& tracks) {
    if (only != nullptr) return *only;
    const TrackInfo* video = firstOf(tracks, TrackKind::kVideo);
    const TrackInfo* audio = firstOf(tracks, TrackKind::kAudio);
    const bool wantsSound = endsWith(options.output, ".wav");
    const TrackInfo* chosen = (wantsSound && audio != nullptr) || video == nullptr ? audio : video;
    if (chosen == nullptr) throw FileFailure(options.file, "has no track to decode (mkvx check says why)");
    return *chosen;
}

void nameOutput(const TrackInfo& track, const std::string& path, TrackSetup& setup) {
    if (track.kind == TrackKind::kAudio) {
        setup.soundPath = path;
        return;
    }
    setup.picturePath = path;
    setup.pictureTimeUs = track.thumbnailUs.value_or(std::numeric_limits<int64_t>::min());
}

std::string interruptedAt(const std::vector<DecodedTrack>& results) {
    size_t units = 0;
    for (const DecodedTrack& track : results) units += track.units;
    return fmt::format("{} of {}", counted(units, "unit"), counted(results.size(), "track"));
}

void checkTrack(const Options& options, const TrackInfo* only) {
    if (only != nullptr && only->kind == TrackKind::kSubtitle)
        throw UsageFailure(
            fmt::format("{}: index {} holds subtitles, which need no decoder (mkvx extract "
                        "writes them)",
                        options.file, only->index));
}

int run(const Globals& globals, const Options& options) {
    const Session session(loadPlugin(globals.plugin), options.file, globals.source);
    const std::vector<TrackInfo>& tracks = session.info().tracks;
    const TrackInfo* only = chosenTrack(session.info(), options.track);
    checkTrack(options, only);
    const TrackInfo* toOutput = options.output.empty() ? nullptr : &outputTrack(options, only, tracks);
    const auto isWanted = [&](const TrackInfo& track) {
        return track.kind != TrackKind::kSubtitle && (only == nullptr || only == &track);
    };
    UnitProgress progress(options.file, options.progress,
                          size_t(std::count_if(tracks.begin(), tracks.end(), isWanted)));
    std::vector<DecodedTrack> results;
    std::unique_ptr<TrackDecoding> output;  // its file is completed when the results are told
    untilInterrupted([&] {
        for (const TrackInfo& track : tracks) {
            if (!isWanted(track) || wasInterrupted()) continue;
            const android::sp<android::MediaSource> source = session.newSource(track.index);
            TrackSetup setup = setupFrom(*source->getFormat());
            setup.mostFrames = options.frames;
            if (&track == toOutput) nameOutput(track, options.output, setup);
            auto decoding = std::make_unique<TrackDecoding>(track, source, std::move(setup), progress);
            results.push_back(decoding->run());
            if (&track == toOutput) output = std::move(decoding);
        }
    });
    progress.hide();
    renderDecoded(results, options.format, stdout);
    if (output && (!wasInterrupted() || output->hasOutput())) output->closeOutput();
    throwIfInterrupted(options.file, interruptedAt(results));
    return kExitDone;
}

}  // namespace

void addDecodeCommand(CommandLine& line, const Globals& globals) {
    auto options = std::make_shared<Options>();
    Arguments command =
        line.command("decode", "Decode every track from the plug-in's configuration keys and units alone");
    command.value("FILE", options->file, "The file to read").required();
    addTrackOption(command, options->track, "Only this track");
    command.value("--frames", options->frames, "Stop after this many decoded frames per track").positive();
    command.value("-o", options->output,
                  "Write the picture at the thumbnail time as PNG, or a sound track as WAV");
    addProgressOption(command, options->progress);
    addFormatOption(command, options->format, {{"table", Format::kTable}, {"json", Format::kJson}});
    command.footer("Example: mkvx decode -o frame.png film.mkv");
    command.action([&globals, options] { return run(globals, *options); });
}

}  // namespace mkvx
