#include "check/Decoders.h"

#include <fmt/format.h>

#include "check/Remedy.h"
#include "codecs/TrackStream.h"
#include "decoders/Fit.h"
#include "device/AacDecoder.h"
#include "device/ElementIds.h"
#include "utils/MimeTypes.h"

namespace mkvx {
namespace {

constexpr uint32_t kBlockAdditionMapping = 0x41E4, kBlockAddIdType = 0x41E7, kBlockAddIdExtraData = 0x41ED;

class DecoderJudge {
  public:
    DecoderJudge(const DecoderMeasure& measure, const FileHead& head, const std::string& path,
                 const TrackInfo& offer, const JudgedTrack& track)
        : mMeasure(measure),
          mHead(head),
          mPath(path),
          mOffer(offer),
          mTrack(track),
          mVerdict(*track.verdict),
          mWeight(measure.device ? Weight::kMute : Weight::kNote) {}

    void judge() {
        if (!judgeAacConfig()) judgeFit();
        judgeDolbyVision();
    }

  private:
    void add(const char* code, Weight weight, std::string sentence, Remedy remedy = {},
             std::optional<Evidence> evidence = {}) {
        mVerdict.findings.push_back(
            {code, weight, std::move(sentence), std::move(evidence), std::move(remedy)});
    }

    // What may play as it is stays so. FFmpeg refuses FLAC whose samples are too wide for devices as well.
    Remedy recoded() const {
        if (mWeight < Weight::kMute || mVerdict.mime == android::MEDIA_MIMETYPE_AUDIO_FLAC) return {};
        const bool isVideo = mVerdict.kind == "video";
        return recodeCommand(mPath, isVideo ? 'v' : 'a', mTrack.ordinal, isVideo ? "libx264" : "aac");
    }

    // The library that devices decode AAC with; true where it refuses.
    bool judgeAacConfig() {
        if (mVerdict.mime != android::MEDIA_MIMETYPE_AUDIO_AAC) return false;
        const Bytes config = streamConfig(mOffer, {}).specificInfo;
        if (config.empty()) return false;  // which is told elsewhere
        const std::string refusal = AacDecoder().configure(config);
        if (refusal.empty()) return false;
        const std::string& profile = mVerdict.stream.profile;
        add("decoder_refuses", mWeight,
            fmt::format("the AAC library of devices refuses its configuration{}: {}",
                        profile.empty() ? "" : " (" + profile + ")", refusal),
            recoded(), mHead.evidenceBelow(mVerdict.position, {id::kCodecPrivate}));
        return true;
    }

    Demand demand() const {
        Demand demand;
        demand.mime = mVerdict.mime;
        demand.stream = mVerdict.stream;
        StreamFacts told;
        told.width = uint32_t(std::max(mOffer.width.value_or(0), 0));
        told.height = uint32_t(std::max(mOffer.height.value_or(0), 0));
        told.sampleRate = uint32_t(std::max(mOffer.sampleRate.value_or(0), 0));
        told.channels = uint32_t(std::max(mOffer.channels.value_or(0), 0));
        complete(demand.stream, told);
        const double seconds = double(mOffer.durationUs.value_or(0)) / 1e6;
        if (mVerdict.counts && seconds >= 1)
            demand.bitRate = uint64_t(double(mVerdict.counts->unitBytes) * 8 / seconds);
        return demand;
    }

    void judgeFit() {
        if (!mMeasure.device) return judgeEra(fitProfiles(mMeasure.profiles, demand()));
        const Fit fit = fitDecoders(*mMeasure.device, mMeasure.profiles, demand());
        mVerdict.decoder = fit.decoder;
        if (fit.obstacle == Obstacle::kMime)
            add("no_decoder", mWeight,
                fit.sentence +
                    (isVendorMime(mVerdict.mime) ? ", a MIME type that only some vendors have" : ""),
                recoded());
        else if (fit.obstacle == Obstacle::kProfile)
            add("decoder_profile", mWeight, "no decoder of the device takes it: " + fit.sentence, recoded());
        else if (fit.obstacle == Obstacle::kLimit)
            add("decoder_limit", mWeight, "no decoder of the device takes it: " + fit.sentence);
    }

    void judgeEra(const Fit& fit) {
        if (fit.obstacle == Obstacle::kProfile)
            add("decoder_profile", mWeight,
                fmt::format("software decoders of that era are not known to take it: {}", fit.sentence),
                recoded());
        else if (isVendorMime(mVerdict.mime))
            add("vendor_mime", mWeight,
                fmt::format("{} is a MIME type that only some vendors have: it plays where a device has a "
                            "decoder of that name",
                            mVerdict.mime));
        else if (fit.obstacle == Obstacle::kMime)
            add("no_decoder", mWeight,
                fmt::format(
                    "no software decoder of that era is known for {}: it plays where a device has one "
                    "of its own",
                    mVerdict.mime));
    }

    // The configuration record in front of which its own description stands.
    void judgeDolbyVision() {
        constexpr uint8_t kIncompatible = 5;
        const auto type = mHead.evidenceBelow(mVerdict.position, {kBlockAdditionMapping, kBlockAddIdType});
        const auto record =
            mHead.evidenceBelow(mVerdict.position, {kBlockAdditionMapping, kBlockAddIdExtraData});
        if (!type || !record || record->bytes.size() < 4) return;
        const std::string name(type->bytes.begin(), type->bytes.end());
        const uint8_t profile = record->bytes[2] >> 1;
        if ((name == "dvcC" || name == "dvvC") && profile == kIncompatible)
            add("dolby_vision", mWeight,
                "it is Dolby Vision of profile 5, whose colours are wrong for every other decoder", {},
                record);
    }

    const DecoderMeasure& mMeasure;
    const FileHead& mHead;
    const std::string& mPath;
    const TrackInfo& mOffer;
    const JudgedTrack& mTrack;
    TrackVerdict& mVerdict;
    const Weight mWeight;
};

}  // namespace

void judgeDecoders(const DecoderMeasure& measure, const FileHead& head, const std::string& path,
                   const TrackInfo& offer, const JudgedTrack& track) {
    if (offer.kind != TrackKind::kSubtitle) DecoderJudge(measure, head, path, offer, track).judge();
}

}  // namespace mkvx
