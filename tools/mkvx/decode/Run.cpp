#include "decode/Run.h"

#include <algorithm>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "decode/Setup.h"
#include "utils/MimeTypes.h"

namespace mkvx {
namespace {

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
const TrackInfo& outputTrack(const FileInfo& file, const TrackInfo* only, const std::string& output) {
    if (only != nullptr) return *only;
    const TrackInfo* video = firstOf(file.tracks, TrackKind::kVideo);
    const TrackInfo* audio = firstOf(file.tracks, TrackKind::kAudio);
    const bool wantsSound = endsWith(output, ".wav");
    const TrackInfo* chosen = (wantsSound && audio != nullptr) || video == nullptr ? audio : video;
    if (chosen == nullptr) throw FileFailure(file.path, "has no track to decode (mkvx check says why)");
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

std::string programFor(const TrackInfo& track, AacChoice aac) {
    const bool isAac = track.mime == android::MEDIA_MIMETYPE_AUDIO_AAC;
    return isAac && aac == AacChoice::kDevice ? "mkvx-decode-aac" : "mkvx-decode";
}

}  // namespace

DecodeRun::DecodeRun(const Session& session, const TrackInfo* only, const DecodeOptions& options)
    : mSession(session),
      mOnly(only),
      mOptions(options),
      mToOutput(options.output.empty() ? nullptr : &outputTrack(session.info(), only, options.output)),
      mProgress(session.info().path, options.progress,
                size_t(std::count_if(session.info().tracks.begin(), session.info().tracks.end(),
                                     [this](const TrackInfo& track) { return isWanted(track); }))) {}

const DecodedFile& DecodeRun::run() {
    untilInterrupted([this] {
        for (const TrackInfo& track : mSession.info().tracks)
            if (isWanted(track) && !wasInterrupted()) decode(track);
    });
    mProgress.hide();
    return mDecoded;
}

void DecodeRun::completeOutput() {
    if (mOutput && (!wasInterrupted() || mOutput->hasOutput())) mOutput->closeOutput();
}

bool DecodeRun::isWanted(const TrackInfo& track) const {
    return track.kind != TrackKind::kSubtitle && (mOnly == nullptr || mOnly == &track);
}

void DecodeRun::decode(const TrackInfo& track) {
    const android::sp<android::MediaSource> source = mSession.newSource(track.index);
    TrackSetup setup = setupFrom(*source->getFormat());
    setup.mostFrames = mOptions.frames;
    if (&track == mToOutput) nameOutput(track, mOptions.output, setup);
    auto decoding =
        std::make_unique<TrackDecoding>(track, source, programFor(track, mOptions.aac), setup, mProgress);
    mDecoded.tracks.push_back(decoding->run());
    if (&track == mToOutput) mOutput = std::move(decoding);
}

}  // namespace mkvx
