#include "mend/Changes.h"

#include <fmt/format.h>
#include <algorithm>
#include <map>

#include "base/Text.h"

namespace mkvx {
namespace {

void append(std::vector<FindingOfTrack>& all, std::optional<uint64_t> track,
            const std::vector<Finding>& findings) {
    for (const Finding& finding : findings) all.push_back({track, finding});
}

void append(std::vector<FindingOfTrack>& all, uint64_t number, const TrackVerdict& track) {
    if (track.dropped) all.push_back({number, *track.dropped});
    append(all, number, track.findings);
}

// A new file's track, by its kind and its place among those.
const TrackVerdict* trackOf(const CheckedFile& file, char kind, size_t ordinal) {
    for (const TrackVerdict& track : file.tracks)
        if (track.kind[0] == kind && ordinal-- == 0) return &track;
    return nullptr;
}

class Comparison {
  public:
    Comparison(const CheckedFile& before, const CheckedFile& after, const MendPlan& plan)
        : mBefore(before), mAfter(after), mPlan(plan) {}

    MendChanges changes() {
        findAfter();
        for (const FindingOfTrack& old : allFindings(mBefore)) match(old);
        mChanges.came.insert(mChanges.came.end(), mLeft.begin(), mLeft.end());
        return std::move(mChanges);
    }

  private:
    // All findings of the new file, with the old one's track numbers.
    void findAfter() {
        append(mLeft, std::nullopt, mAfter.findings);
        if (mBefore.tracks.empty())  // nothing could be read of it
            for (const TrackVerdict& track : mAfter.tracks) append(mLeft, track.number, track);
        std::map<char, size_t> ordinals;
        for (const MendPlan::Stream& stream : mPlan.streams) {
            const TrackVerdict& old = mBefore.tracks[stream.entry];
            const TrackVerdict* track = trackOf(mAfter, stream.kind, ordinals[stream.kind]++);
            if (track == nullptr)
                come(old.number, "track_missing", "the new file does not have it");
            else
                takeTrack(old, *track, stream.encoder.empty());
        }
    }

    void takeTrack(const TrackVerdict& old, const TrackVerdict& track, bool isCopied) {
        append(mLeft, old.number, track);
        if (isCopied && old.counts && track.counts && track.counts->units < old.counts->units)
            come(old.number, "fewer_units",
                 fmt::format("{} arrive of {}", track.counts->units, counted(old.counts->units, "unit")));
    }

    void come(uint64_t number, const char* code, std::string sentence) {
        mChanges.came.push_back(
            {number, Finding{code, Weight::kLoss, std::move(sentence), std::nullopt, Remedy()}});
    }

    void match(const FindingOfTrack& old) {
        const auto same = std::find_if(mLeft.begin(), mLeft.end(), [&](const FindingOfTrack& found) {
            return found.track == old.track && found.finding.code == old.finding.code;
        });
        (same == mLeft.end() ? mChanges.gone : mChanges.stays).push_back(old);
        if (same != mLeft.end()) mLeft.erase(same);
    }

    const CheckedFile& mBefore;
    const CheckedFile& mAfter;
    const MendPlan& mPlan;
    std::vector<FindingOfTrack> mLeft;  // of the new file, and of no old one
    MendChanges mChanges;
};

}  // namespace

std::vector<FindingOfTrack> allFindings(const CheckedFile& checked) {
    std::vector<FindingOfTrack> all;
    for (const TrackVerdict& track : checked.tracks) append(all, track.number, track);
    append(all, std::nullopt, checked.findings);
    return all;
}

MendChanges changesOf(const CheckedFile& before, const CheckedFile& after, const MendPlan& plan) {
    return Comparison(before, after, plan).changes();
}

}  // namespace mkvx
