// What arrives of each track.
#include <fmt/format.h>
#include <algorithm>
#include <map>
#include <set>

#include "base/Text.h"
#include "check/Findings.h"
#include "check/Remedy.h"
#include "codecs/UnitFault.h"
#include "device/ElementIds.h"
#include "device/Losses.h"
#include "utils/MimeTypes.h"

namespace mkvx {
namespace {

// As a number of one to eight bytes, of which each gives seven bits (RFC 8794, section 4).
bool isAllOnes(uint64_t number) {
    for (unsigned length = 1; length <= 8; ++length)
        if (number == (uint64_t{1} << (7 * length)) - 1) return true;
    return false;
}

std::vector<size_t> offeredPlaces(const std::vector<JudgedTrack>& tracks) {
    std::vector<size_t> places;
    for (const JudgedTrack& track : tracks)
        if (track.verdict->isOffered()) places.push_back(track.place);
    return places;
}

class Delivery {
  public:
    Delivery(const FileHead& head, const std::string& path, const JudgedTrack& track, const BlockTally& tally)
        : mHead(head),
          mPath(path),
          mTrack(track),
          mEntry(track.entry),
          mVerdict(*track.verdict),
          mCounts(*mVerdict.counts),
          mTally(tally) {}

    void judge() {
        mCounts.blocks = mTally.blocks;
        if (!mVerdict.isOffered()) return judgeRecoding();
        if (mTally.blocks == 0) return judgeSilence();
        judgeReading();
        judgeTimes();
        judgeLacing();
        if (mVerdict.kind == "subtitle")
            mCounts.unreadable = mTally.refused;
        else
            judgeReach();
        judgeResult();
    }

    // After judge(): some blocks were not come to.
    bool isCutShort() const { return mIsCutShort; }

    // `records`: what was queued of its own number.
    void judgeMerging(uint64_t records) {
        const uint64_t readable = mTally.blocks - mTally.refused;
        if (records < readable)
            add("events_merged", Weight::kLoss,
                fmt::format("{} of its {} events appear merged with another, which they follow before the "
                            "next unit of the master track",
                            readable - records, readable),
                std::nullopt, isStyled() ? recode("srt") : Remedy());
    }

  private:
    void add(const char* code, Weight weight, std::string sentence, std::optional<uint64_t> position,
             Remedy remedy = {}) {
        std::optional<Evidence> evidence;
        if (position) evidence = mHead.evidenceAt(*position);
        mVerdict.findings.push_back(
            {code, weight, std::move(sentence), std::move(evidence), std::move(remedy)});
    }

    // What keeps every unit of a track away keeps it from playing.
    Weight lossOrAll() const { return mCounts.units == 0 ? Weight::kMute : Weight::kLoss; }

    void judgeResult() {
        const auto explains = [](const Finding& finding) { return finding.weight >= Weight::kMute; };
        const auto& findings = mVerdict.findings;
        if (mCounts.units > 0 || std::any_of(findings.begin(), findings.end(), explains)) return;
        add("no_units", Weight::kMute, fmt::format("none of its {} arrives", counted(mTally.blocks, "block")),
            std::nullopt);
    }

    // Plain text with as many commas is merged too, and is what others would be turned into.
    bool isStyled() const { return mVerdict.codecId != "S_TEXT/UTF8"; }
    Remedy recode(const char* encoder) const {
        return recodeCommand(mPath, mVerdict.kind[0], mTrack.ordinal, encoder);
    }

    // Nothing codes a dropped track anew when its frames are none of its codec. The first one tells, where it
    // is stored as it is, behind four bytes of header.
    void judgeRecoding() {
        constexpr size_t kHeader = 4, kFlags = 3;
        constexpr uint8_t kShortNumber = 0x80, kLacing = 0x06;
        const bool isVp8 = mVerdict.codecId.compare(0, 5, "V_VP8") == 0 && mEntry.encodings.empty();
        if (!isVp8 || mTally.blocks == 0 || !mVerdict.dropped) return;
        const Bytes block = mHead.evidenceAt(mTally.first).bytes;
        if (block.size() < kHeader || block[0] < kShortNumber || (block[kFlags] & kLacing) != 0) return;
        const char* fault =
            unitFault(android::MEDIA_MIMETYPE_VIDEO_VP8, block.data() + kHeader, block.size() - kHeader);
        if (fault == nullptr) return;
        mVerdict.dropped->remedy = {};
        add("units_undecodable", Weight::kNote,
            fmt::format("nothing can code it anew: its first frame {}", fault), mTally.first);
    }

    void judgeSilence() {
        if (isAllOnes(mVerdict.number)) return judgeUnknownNumber();
        const bool isAlone = mHead.trackCount() == 1;
        add("no_blocks", Weight::kMute, "nothing arrives: the file has no block of it", std::nullopt,
            isAlone ? Remedy() : dropCommand(mPath, mVerdict.kind[0], mTrack.ordinal));
    }

    void judgeUnknownNumber() {
        mVerdict.findings.push_back(
            {"all_ones_number", Weight::kMute,
             fmt::format("none of its blocks is found: its TrackNumber {} has all bits set, which in a block "
                         "stands for an unknown number",
                         mVerdict.number),
             mHead.evidenceBelow(mVerdict.position, {id::kTrackNumber}), remuxCommand(mPath)});
    }

    void judgeReading() {
        if (mTally.refused > 0)
            add("blocks_unreadable", lossOrAll(),
                fmt::format("a player ends it early: {} of its {} blocks cannot be read ({}), and the first "
                            "of them is "
                            "taken for the end",
                            mTally.refused, mTally.blocks, textOf(mTally.refusedFor).sentence),
                mTally.firstRefused, remuxCommand(mPath));
    }

    void judgeTimes() {
        if (mTally.wrapped > 0)
            add("times_wrap", Weight::kLoss,
                fmt::format("{} of its {} blocks come at wrong times: below zero or beyond 64 bits they wrap",
                            mTally.wrapped, mTally.blocks),
                mTally.firstWrapped, remuxCommand(mPath));
    }

    void judgeLacing() {
        if (mTally.laced == 0 || mEntry.deliversLacesApart) return;
        if (mVerdict.mime == android::MEDIA_MIMETYPE_AUDIO_AAC)
            judgeLacedAac();
        else
            add("laced_units", Weight::kNote,
                fmt::format("{} of its blocks hold {} frames together, and arrive as one unit each",
                            mTally.laced, mTally.laces),
                std::nullopt);
    }

    // Frames of other codecs find their own bounds in a unit; these have none.
    void judgeLacedAac() {
        const bool isMost = mTally.laced * 2 >= mTally.blocks;
        add("laced_units", isMost ? Weight::kMute : Weight::kLoss,
            fmt::format("{} of its {} units hold several frames each, and the AAC decoder of devices refuses "
                        "such a unit as a whole",
                        mTally.laced, mTally.blocks),
            mTally.firstLaced, remuxCommand(mPath));
    }

    // How many units its blocks make.
    uint64_t due() const {
        return mTally.blocks + (mEntry.deliversLacesApart ? mTally.laces - mTally.laced : 0);
    }

    void judgeReach() {
        const uint64_t met = mCounts.units + mCounts.unreadable;
        mIsCutShort = met < due();
        if (mIsCutShort)
            add("blocks_unreached", lossOrAll(),
                fmt::format("{} of its {} blocks lie where reading does not come", due() - met,
                            mTally.blocks),
                std::nullopt, remuxCommand(mPath));
    }

    const FileHead& mHead;
    const std::string& mPath;
    const JudgedTrack& mTrack;
    const FileTrack& mEntry;
    TrackVerdict& mVerdict;
    TrackCounts& mCounts;
    const BlockTally& mTally;
    bool mIsCutShort = false;
};

void tellMisfit(const FileHead& head, const std::vector<JudgedTrack>& tracks, const CheckedFile& checked,
                TrackVerdict& verdict) {
    const uint64_t heard = *verdict.index + 1;
    const auto isHeard = [&](const TrackVerdict& other) {
        return other.number == heard && other.kind == "subtitle";
    };
    const bool getsOthers = std::any_of(checked.tracks.begin(), checked.tracks.end(), isHeard);
    verdict.findings.push_back(
        {"subtitle_number", Weight::kMute,
         fmt::format("{} a subtitle source gets the events whose TrackNumber is its index plus one, and at "
                     "index {} this one, track number {}, gets {}",
                     getsOthers ? "other subtitles appear:" : "no subtitle appears:", *verdict.index,
                     verdict.number,
                     getsOthers ? fmt::format("those of track number {}", heard) : std::string("none")),
         head.evidenceBelow(verdict.position, {id::kTrackNumber}),
         selectCommand(checked.path, offeredPlaces(tracks))});
}

// What of the payload arrives, over all tracks.
class Arrivals {
  public:
    Arrivals(const FileHead& head, const ByteAccount& account, const EventTallies& events,
             const std::string& path)
        : mHead(head), mAccount(account), mEvents(events), mPath(path) {}

    void add(const JudgedTrack& track) {
        const TrackVerdict& verdict = *track.verdict;
        static const BlockTally kNone;
        const auto tally = mAccount.blocks.find(verdict.number);
        Delivery delivery(mHead, mPath, track, tally == mAccount.blocks.end() ? kNone : tally->second);
        if (verdict.kind == "subtitle" && verdict.isOffered()) return addEvents(delivery, *track.verdict);
        delivery.judge();
        if (verdict.isOffered()) mArrives.insert(verdict.number);
        if (delivery.isCutShort() && tally->second.payload > verdict.counts->unitBytes)
            mLost[verdict.number] = tally->second.payload - verdict.counts->unitBytes;
    }

    ByteShares shares() const {
        ByteShares shares;
        shares.metadata = mAccount.metadata;
        shares.notOffered = mAccount.additions;
        shares.padding = mAccount.padding;
        shares.damaged = mAccount.damaged;
        shares.unreachable = mAccount.unreachable;
        for (const auto& [number, tally] : mAccount.blocks) addPayload(number, tally.payload, shares);
        return shares;
    }

  private:
    // The events that its source hears need not be those of its own number.
    void addEvents(Delivery& delivery, TrackVerdict& verdict) {
        const auto heard = mEvents.find(*verdict.index + 1);
        if (heard != mEvents.end()) {
            verdict.counts->units = heard->second.records;
            verdict.counts->unitBytes = heard->second.bytes;
            mArrives.insert(heard->first);
        }
        delivery.judge();
        const auto own = mEvents.find(verdict.number);
        if (!mEvents.empty()) delivery.judgeMerging(own == mEvents.end() ? 0 : own->second.records);
    }

    void addPayload(uint64_t number, uint64_t payload, ByteShares& shares) const {
        const auto unreached = mLost.find(number);
        const uint64_t out = unreached == mLost.end() ? 0 : std::min(unreached->second, payload);
        shares.unreachable += out;
        (mArrives.count(number) != 0 ? shares.delivered : shares.notOffered) += payload - out;
    }

    const FileHead& mHead;
    const ByteAccount& mAccount;
    const EventTallies& mEvents;
    const std::string& mPath;
    std::set<uint64_t> mArrives;         // numbers whose blocks arrive
    std::map<uint64_t, uint64_t> mLost;  // payload of a number that reading does not come to
};

}  // namespace

void judgeSubtitles(const Session& session, const std::vector<JudgedTrack>& tracks, CheckedFile& checked) {
    const FileHead& head = session.reader().head();
    for (const JudgedTrack& track : tracks) {
        TrackVerdict& verdict = *track.verdict;
        if (!verdict.isOffered() || verdict.kind != "subtitle") continue;
        if (session.masterTrack() == nullptr)
            verdict.findings.push_back(
                {"no_master", Weight::kMute,
                 fmt::format("no subtitle appears: events arrive while the master track "
                             "(track number {}) is read, and that one has no source",
                             head.masterTrack()),
                 head.evidenceBelow(verdict.position, {id::kTrackNumber}), ""});
        else if (verdict.number != *verdict.index + 1)
            tellMisfit(head, tracks, checked, verdict);
    }
}

void judgeDelivery(const FileHead& head, const std::vector<JudgedTrack>& tracks, const ByteAccount& account,
                   const EventTallies& events, CheckedFile& checked) {
    Arrivals arrivals(head, account, events, checked.path);
    for (const JudgedTrack& track : tracks) arrivals.add(track);
    if (checked.size > 0) checked.shares = arrivals.shares();  // of a source that tells its size
}

}  // namespace mkvx
