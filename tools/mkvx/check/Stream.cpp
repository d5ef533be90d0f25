#include "check/Stream.h"

#include <fmt/format.h>
#include <algorithm>
#include <cmath>

#include "base/Text.h"
#include "codecs/TrackStream.h"
#include "codecs/UnitFault.h"
#include "codecs/VorbisSetup.h"
#include "device/ElementIds.h"
#include "utils/MimeTypes.h"

namespace mkvx {
namespace {

constexpr uint64_t kMostLookedInto = 16;  // units, for what the configuration does not tell

bool isSilent(const TrackVerdict& track) {
    return std::any_of(track.findings.begin(), track.findings.end(),
                       [](const Finding& finding) { return finding.weight >= Weight::kMute; });
}

const Bytes* recordOf(const TrackInfo& track, const char* key) {
    for (const ConfigRecord& record : track.config)
        if (record.key == key) return &record.bytes;
    return nullptr;
}

std::unique_ptr<AacDecoder> aacDecoderFor(const TrackInfo& track) {
    if (track.mime != android::MEDIA_MIMETYPE_AUDIO_AAC) return nullptr;
    auto decoder = std::make_unique<AacDecoder>();
    const bool isTaken = decoder->configure(streamConfig(track, {}).specificInfo).empty();
    return isTaken ? std::move(decoder) : nullptr;
}

}  // namespace

void judgeStreamConfig(const FileHead& head, const TrackInfo& track, const JudgedTrack& judged) {
    TrackVerdict& verdict = *judged.verdict;
    verdict.stream = factsOfConfig(track.mime, streamConfig(track, judged.entry.codecPrivate));
    const Bytes* identification = recordOf(track, "vinf");
    const Bytes* setup = recordOf(track, "vboo");
    if (identification != nullptr && setup != nullptr && !isVorbisSetupUsable(*identification, *setup))
        verdict.findings.push_back(
            {"config_undecodable", Weight::kMute,
             "no decoder can begin with its Vorbis headers: their codebooks do not work",
             head.evidenceBelowOr(verdict.position, {id::kCodecPrivate}), ""});
}

StreamProbe::StreamProbe(const TrackInfo& track, TrackVerdict& verdict)
    : mVerdict(verdict), mAac(aacDecoderFor(track)) {}

void StreamProbe::take(const uint8_t* data, size_t size, int64_t timeUs) {
    StreamFacts& stream = mVerdict.stream;
    if (mUnits < kMostLookedInto && (stream.profile.empty() || stream.bitDepth == 0))
        complete(stream, factsOfUnit(mVerdict.mime, data, size));
    mFirstUs = mUnits == 0 ? timeUs : std::min(mFirstUs, timeUs);
    mLastUs = mUnits == 0 ? timeUs : std::max(mLastUs, timeUs);
    ++mUnits;
    if (mAac) return tryDecoding(data, size);
    ++mTried;
    const char* fault = unitFault(mVerdict.mime, data, size);
    if (fault != nullptr && mFaulty++ == 0) mFirstFault = fault;
}

void StreamProbe::tryDecoding(const uint8_t* data, size_t size) {
    if (mTried >= kMostDecoded) return;
    ++mTried;
    AacDecoder::Sound sound;
    const std::string error = mAac->decode(data, size, sound);
    if (!error.empty() && mFaulty++ == 0) mFirstFault = "gives " + error + ", by the AAC library of devices";
}

void StreamProbe::finish() {
    tellRates();
    tellFaults();
}

// A rate that the stream states is told where the times agree with it, and theirs otherwise.
void StreamProbe::tellRates() {
    constexpr double kTolerance = 0.05;
    if (mVerdict.kind != "video" || mUnits < 2 || mLastUs <= mFirstUs) return;
    const double measured = double(mUnits - 1) * 1e6 / (double(mLastUs) - double(mFirstUs));
    double& rate = mVerdict.stream.frameRate;
    if (std::abs(rate - measured) > kTolerance * measured) rate = measured;
}

// Frames within one unit are told by the lacing of its block.
void StreamProbe::tellFaults() {
    if (mFaulty == 0 || isSilent(mVerdict)) return;
    const bool isEach = mFaulty == mTried;
    if (mAac && !isEach) return;  // a decoder's error may be that of the unit before
    const std::string of = (mTried < mUnits ? "its first " : "its ") + counted(mTried, "unit");
    const std::string sentence =
        mUnits == 1 ? fmt::format("its only unit cannot be decoded: it {}", mFirstFault)
        : isEach    ? fmt::format("none of {} can be decoded: the first {}", of, mFirstFault)
                 : fmt::format("{} of {} cannot be decoded: the first of them {}", mFaulty, of, mFirstFault);
    mVerdict.findings.push_back(
        {"units_undecodable", isEach ? Weight::kMute : Weight::kLoss, sentence, std::nullopt, ""});
}

}  // namespace mkvx
