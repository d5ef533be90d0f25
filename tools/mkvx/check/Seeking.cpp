// Where seeks go: the duration, and the index.
#include <fmt/format.h>
#include <algorithm>

#include "base/Text.h"
#include "check/Findings.h"
#include "check/Remedy.h"
#include "device/CuesSearch.h"
#include "device/ElementIds.h"

namespace mkvx {
namespace {

constexpr int64_t kSlightUs = 500000;              // nobody seeks to so short an end
constexpr int64_t kMostTimeUs = int64_t{1} << 53;  // a time beyond it has wrapped

class Seeking {
  public:
    Seeking(const Session& session, std::optional<int64_t> lastUs, CheckedFile& checked)
        : mSession(session),
          mHead(session.reader().head()),
          mReport(session.reader().index()),
          mLastUs(lastUs && *lastUs < kMostTimeUs ? lastUs : std::nullopt),
          mChecked(checked) {}

    void judge() {
        mChecked.seeking = SeekFacts{
            mReport.source, mReport.points, mReport.masterPoints, mReport.masterTrack, 0, mReport.durationUs};
        if (mReport.source == "scan")
            judgeScannedDuration();
        else
            judgeStatedDuration();
        if (mReport.source == "cues" && mReport.points > 0)
            judgeCues();
        else
            judgeLackOfCues();
    }

  private:
    void add(const char* code, Weight weight, std::string sentence, std::optional<Evidence> evidence = {}) {
        mChecked.findings.push_back(
            {code, weight, std::move(sentence), std::move(evidence), remuxCommand(mChecked.path)});
    }

    // ---- the duration

    // A scan puts the start of the last Cluster in the place of what the file states.
    void judgeScannedDuration() {
        const int64_t statedUs = FileHead(mSession.newBytes()).durationUs();
        const int64_t shownUs = mReport.durationUs;
        const std::string stated = statedUs > shownUs ? "; the file says " + clockTime(statedUs) : "";
        if (shownUs == 0)
            return add(
                "no_duration", Weight::kLoss,
                "every seek ends the stream: without Cues the start of the last Cluster is taken for the "
                "duration, and that is 0" +
                    stated,
                lastCluster());
        const bool isWhole = mLastUs ? *mLastUs < shownUs && statedUs <= shownUs : statedUs == shownUs;
        if (isWhole) return;
        const std::string last =
            mLastUs && *mLastUs >= shownUs ? "; its last unit begins at " + clockTime(*mLastUs) : "";
        add("duration_cut", Weight::kLoss,
            fmt::format("{} is shown as the duration, and every seek to it or behind it ends the stream: "
                        "without Cues "
                        "that is the start of the last Cluster{}{}",
                        clockTime(shownUs), stated, last),
            lastCluster());
    }

    std::optional<Evidence> lastCluster() const {
        std::optional<uint64_t> last;
        for (const IndexEntry& entry : mReport.entries) last = std::max(last.value_or(0), entry.position);
        if (!last) return std::nullopt;
        return mHead.evidenceAt(mHead.document().segmentData + *last);
    }

    void judgeStatedDuration() {
        if (mReport.durationUs == 0) {
            const auto element = durationElement();
            return add("no_duration", Weight::kLoss,
                       element ? "every seek ends the stream, for the file's Duration counts as 0"
                               : "every seek ends the stream, for the file states no Duration",
                       element);
        }
        if (!mLastUs || *mLastUs < mReport.durationUs) return;
        add("duration_cut", *mLastUs - mReport.durationUs < kSlightUs ? Weight::kNote : Weight::kLoss,
            fmt::format(
                "every seek to {} or behind it ends the stream: that is the file's Duration; its last unit "
                "begins at {}",
                clockTime(mReport.durationUs), clockTime(*mLastUs)),
            durationElement());
        if (mChecked.findings.back().weight == Weight::kNote)  // as muxers have it
            mChecked.findings.back().remedy = {};
    }

    std::optional<Evidence> durationElement() const {
        const auto segment = mHead.document().segment;
        return segment ? mHead.evidenceBelow(*segment, {id::kInfo, id::kDuration}) : std::nullopt;
    }

    // ---- the index

    void judgeCues() {
        if (mReport.masterPoints == 0)
            add("cues_miss_master", Weight::kLoss,
                fmt::format("every seek starts over: none of the {} cue points names the master track (track "
                            "number {})",
                            mReport.points, mReport.masterTrack));
        const OwnReader::AstrayCues astray = mSession.reader().masterCuesAstray();
        if (astray.count > 0)
            add("cues_astray", Weight::kLoss,
                fmt::format("{} of the Cues {} to no Cluster, and seeks go to an earlier one or start over",
                            counted(astray.count, "position"), astray.count == 1 ? "leads" : "lead"),
                mHead.bytesAt(astray.first, Evidence::kMostBytes));
    }

    void judgeLackOfCues() {
        const CuesPlaces cues = findCues(mSession.newBytes());
        const bool isScan = mReport.source == "scan";
        const std::string effect =
            isScan
                ? fmt::format("opening visits every Cluster ({}), and from a network source seeks start over",
                              mReport.points)
                : std::string("every seek starts over");
        const std::string code = cues.found ? cues.hasPoints ? "cues_unreached" : "cues_empty"
                                 : isScan   ? "no_cues"
                                            : "no_cues_streamed";
        std::optional<Evidence> evidence;
        if (cues.found || cues.entry)
            evidence = mHead.evidenceAt(cues.found ? *cues.found : cues.entry->offset);
        add(code.c_str(), isScan ? Weight::kNote : Weight::kLoss, effect + ": " + whyWithout(cues),
            std::move(evidence));
    }

    std::string whyWithout(const CuesPlaces& cues) const {
        const bool isBehind = cues.entry && mChecked.size > 0 && cues.entry->leadsTo >= mChecked.size;
        const std::string lead =
            cues.entry ? fmt::format("the SeekHead's entry at {} leads to {}{}", cues.entry->offset,
                                     cues.entry->leadsTo, isBehind ? ", behind the file's end" : "")
                       : std::string();
        if (!cues.found) return cues.entry ? "there are no Cues where " + lead : "there are no Cues";
        const std::string found = fmt::format("the Cues at {}", *cues.found);
        if (!cues.hasPoints) return found + " hold no cue point that names a place";
        if (!cues.entry)
            return found + " are not found, for no SeekHead names them and opening does not come so far";
        return found +
               (cues.entry->leadsTo == *cues.found ? " are not read, although " : " are not found, for ") +
               lead;
    }

    const Session& mSession;
    const FileHead& mHead;
    const IndexReport mReport;
    const std::optional<int64_t> mLastUs;
    CheckedFile& mChecked;
};

}  // namespace

void judgeSeeking(const Session& session, std::optional<int64_t> lastUs, CheckedFile& checked) {
    Seeking(session, lastUs, checked).judge();
}

}  // namespace mkvx
