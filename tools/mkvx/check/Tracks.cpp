#include "check/Tracks.h"

#include <fmt/format.h>
#include <algorithm>
#include <map>

#include "base/Text.h"
#include "check/AacConfigurations.h"
#include "check/Remedy.h"
#include "device/CodecRecords.h"
#include "device/ElementIds.h"
#include "utils/MimeTypes.h"
#include "utils/NalRewrite.h"

namespace mkvx {
namespace {

constexpr size_t kMostCodecId = 64;
constexpr std::initializer_list<uint32_t> kEncryptionPath = {id::kContentEncodings, id::kContentEncoding,
                                                             id::kContentEncryption};

std::string kindOf(uint64_t type) {
    if (type == kVideoType) return "video";
    if (type == kAudioType) return "audio";
    if (type == kSubtitleType) return "subtitle";
    return fmt::format("type {}", type);
}

TrackVerdict verdictOf(const FileTrack& entry) {
    TrackVerdict verdict;
    verdict.number = entry.number;
    verdict.type = entry.type;
    verdict.kind = kindOf(entry.type);
    verdict.codecId = entry.codecId.substr(0, kMostCodecId);
    verdict.position = entry.position;
    return verdict;
}

// Adds findings to one track, with the evidence where it is found.
class Judge {
  public:
    Judge(const FileHead& head, const std::string& path, const JudgedTrack& track, const TrackInfo& offer)
        : mHead(head),
          mPath(path),
          mTrack(track),
          mOffer(offer),
          mEntry(track.entry),
          mVerdict(*track.verdict) {}

    void judge() {
        judgeNumber();
        judgeEncodings();
        judgeRecord();
        if (isMime(android::MEDIA_MIMETYPE_AUDIO_AAC)) judgeAac();
        judgeEsds();
        judgeFormat();
        judgeTexts();
    }

  private:
    using Path = std::initializer_list<uint32_t>;

    void add(const char* code, Weight weight, std::string sentence, Path path, Remedy remedy = {}) {
        mVerdict.findings.push_back({code, weight, std::move(sentence),
                                     mHead.evidenceBelowOr(mEntry.position, path), std::move(remedy)});
    }
    bool isMime(const char* mime) const { return mVerdict.mime == mime; }
    const Bytes* record(const char* key) const {
        for (const ConfigRecord& record : mOffer.config)
            if (record.key == key) return &record.bytes;
        return nullptr;
    }
    char letter() const { return mVerdict.kind[0]; }

    void judgeNumber() {
        const uint64_t number = mVerdict.number;
        if (number == 0 || number > UINT32_MAX)
            add("bad_number", Weight::kMute,
                fmt::format("none of its blocks is found: its TrackNumber is {}, which no block can name",
                            number),
                {id::kTrackNumber}, remuxCommand(mPath));
        else if (!mEntry.isFound)
            add("duplicate_number", Weight::kLoss,
                fmt::format("its blocks are mixed with another track's: both have the TrackNumber {}, and "
                            "deliver the "
                            "same blocks, read as the other's",
                            number),
                {id::kTrackNumber}, dropCommand(mPath, letter(), mTrack.ordinal));
    }

    void judgeEncodings() {
        bool isBlocked = false;  // by a restored header, behind which nothing is undone
        for (size_t i = mEntry.encodings.size(); i-- > 0;) {
            const FrameEncoding& encoding = mEntry.encodings[i];
            if (encoding.coversPrivate && !mEntry.codecPrivate.empty())
                add("private_encoded", Weight::kMute,
                    "the decoder cannot be set up: its CodecPrivate is stored encoded, and is handed out so",
                    {id::kCodecPrivate}, copyCommand(mPath));
            if (!encoding.coversFrames) continue;
            judgeEncoding(encoding, isBlocked);
            isBlocked = isBlocked || encoding.isHeaderStripping;
        }
    }

    void judgeEncoding(const FrameEncoding& encoding, bool isBlocked) {
        if (encoding.isEncryption)
            add("encrypted", Weight::kMute,
                "nothing of it can be decoded: its frames are encrypted, and arrive so", kEncryptionPath);
        else if (!encoding.isUndone)
            add("encoding_unsupported", Weight::kMute,
                fmt::format("nothing of it can be decoded: its frames are compressed by algorithm {}, which "
                            "is not undone",
                            encoding.algorithm),
                {id::kContentEncodings, id::kContentEncoding, id::kContentCompression, id::kContentCompAlgo},
                copyCommand(mPath));
        else if (isBlocked)
            add("encodings_stacked", Weight::kMute,
                "nothing of it can be decoded: its frames have a further encoding under header stripping, "
                "which is not undone",
                {id::kContentEncodings}, copyCommand(mPath));
    }

    void judgeRecord() {
        if (mEntry.missesRecordOf != 0)
            add("record_too_short", Weight::kMute,
                fmt::format("it is offered as {}, which is another format: its CodecPrivate has {} bytes, "
                            "too few for a record of {}",
                            mVerdict.mime, mEntry.codecPrivate.size(), printable(mVerdict.codecId)),
                {id::kCodecPrivate}, copyCommand(mPath));
        if (mEntry.tagFrom != FileTrack::TagOrigin::kCodecId) return;
        const Bytes* avcc = record("avcc");
        const Bytes* hvcc = record("hvcc");
        const auto length = avcc != nullptr   ? avccLengthBytes(*avcc)
                            : hvcc != nullptr ? hvccLengthBytes(*hvcc)
                                              : std::nullopt;
        if (length && *length != android::kNalLengthBytes)
            add("nal_length", Weight::kMute,
                fmt::format("no picture can be decoded: its NAL units have lengths of {} bytes, and only "
                            "lengths of {} become start codes",
                            *length, android::kNalLengthBytes),
                {id::kCodecPrivate}, recodeCommand(mPath, 'v', mTrack.ordinal, "libx264"));
    }

    void judgeAac() {
        if (record("esds") == nullptr)
            add("aac_private_too_short", Weight::kMute,
                fmt::format("the decoder gets no configuration: its CodecPrivate of {} byte(s) is too short "
                            "to be used, and keeps one from being made",
                            mEntry.codecPrivate.size()),
                {id::kCodecPrivate});
        else if (const auto otherwise = judgedOtherwiseOnDevice(mEntry.codecPrivate))
            add("aac_judged_otherwise", Weight::kNote, *otherwise, {id::kCodecPrivate});
        const std::string& codec = mVerdict.codecId;
        const bool saysSbr = codec.size() >= 4 && codec.compare(codec.size() - 4, 4, "/SBR") == 0;
        if (saysSbr && mEntry.codecPrivate.empty())
            add("aac_sbr_as_ltp", Weight::kLoss,
                "the decoder is told LTP where the file says SBR: without a CodecPrivate its configuration "
                "is "
                "made from the CodecID",
                {id::kCodecId}, recodeCommand(mPath, 'a', mTrack.ordinal, "aac"));
    }

    // The descriptor around a CodecPrivate of certain sizes lacks its last byte.
    void judgeEsds() {
        const Bytes* esds = record("esds");
        const size_t size = mEntry.codecPrivate.size();
        if (esds == nullptr || size == 0) return;
        const Bytes info = specificInfo(*esds);
        const auto endsWith = [&](size_t length) {
            return info.size() >= length &&
                   std::equal(info.end() - std::ptrdiff_t(length), info.end(), mEntry.codecPrivate.data());
        };
        if (!endsWith(size) && size > 1 && endsWith(size - 1))
            add("config_cut", Weight::kLoss,
                fmt::format("the decoder gets its CodecPrivate of {} bytes without the last one", size),
                {id::kCodecPrivate});
    }

    void judgeFormat() {
        if (mVerdict.kind == "video" && (mEntry.pixelWidth == 0 || mEntry.pixelHeight == 0))
            add("no_picture_size", Weight::kLoss, "it has no picture size", {id::kVideo}, copyCommand(mPath));
        if (mVerdict.kind == "audio" && !mEntry.hasAudioFormat)
            add("no_audio_format", Weight::kLoss,
                "8000 Hz and one channel are told, true or not: it has no sampling frequency and no channel "
                "count",
                {}, copyCommand(mPath));
        const uint64_t bits = mEntry.bitsPerSample;
        const bool isRaw = isMime(android::MEDIA_MIMETYPE_AUDIO_RAW) && mEntry.codecPrivate.empty();
        if (isRaw && bits != 16 && bits != 0)
            add("pcm_sample_size", Weight::kMute,
                fmt::format("noise comes out: its samples have {} bits, which no key tells, and the device "
                            "takes 16 for granted",
                            bits),
                {id::kAudio, id::kBitDepth}, recodeCommand(mPath, letter(), mTrack.ordinal, "pcm_s16le"));
        if (mEntry.timeScale != 1.0)
            add("track_time_scale", Weight::kLoss,
                fmt::format("its times are off: its TrackTimestampScale of {} is not looked at",
                            mEntry.timeScale),
                {id::kTrackTimecodeScale}, remuxCommand(mPath));
    }

    void judgeTexts() {
        if (mVerdict.kind == "subtitle" && !mEntry.codecPrivate.empty())
            add("header_withheld", Weight::kNote,
                "its styles are lost: its CodecPrivate, which defines them, is not handed out",
                {id::kCodecPrivate});
        if (mVerdict.kind == "subtitle" || !mEntry.hasName) return;
        add("name_as_language", Weight::kNote,
            "its language is not told: its Name is handed out in its place", {id::kName});
    }

    const FileHead& mHead;
    const std::string& mPath;
    const JudgedTrack& mTrack;
    const TrackInfo& mOffer;
    const FileTrack& mEntry;
    TrackVerdict& mVerdict;
};

}  // namespace

std::vector<JudgedTrack> listTracks(const FileHead& head, CheckedFile& checked) {
    std::vector<JudgedTrack> judged;
    std::map<std::string, size_t> ordinals;
    std::vector<FileTrack> entries = head.tracks();
    checked.tracks.clear();
    checked.tracks.reserve(entries.size());  // the pointers to them have to last
    for (FileTrack& entry : entries) {
        checked.tracks.push_back(verdictOf(entry));
        TrackVerdict& verdict = checked.tracks.back();
        const size_t ordinal = ordinals[verdict.kind]++;
        judged.push_back({std::move(entry), &verdict, judged.size(), ordinal});
    }
    return judged;
}

void judgeDropped(const FileHead& head, const JudgedTrack& track) {
    const auto& encodings = track.entry.encodings;
    if (std::any_of(encodings.begin(), encodings.end(),
                    [](const auto& encoding) { return encoding.coversFrames && encoding.isEncryption; }))
        track.verdict->findings.push_back({"encrypted", Weight::kMute,
                                           "its frames are encrypted, so that no other codec helps it either",
                                           head.evidenceBelowOr(track.entry.position, kEncryptionPath), ""});
}

void judgeOffered(const FileHead& head, const std::string& path, const JudgedTrack& track,
                  const TrackInfo& offer) {
    Judge(head, path, track, offer).judge();
}

}  // namespace mkvx
