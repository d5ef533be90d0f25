#include "check/Proposals.h"

#include <algorithm>
#include <functional>

#include "check/Remedy.h"

namespace mkvx {
namespace {

constexpr char kTruncated[] = "truncated";

bool isEncrypted(const JudgedTrack& track) {
    const auto& encodings = track.entry.encodings;
    return std::any_of(encodings.begin(), encodings.end(),
                       [](const FrameEncoding& encoding) { return encoding.isEncryption; });
}

// mkvmerge undoes what the plug-in undoes, takes Opus by its header, and video with a size.
bool isLeftOutByRemux(const JudgedTrack& track) {
    const auto& encodings = track.entry.encodings;
    const bool isOpaque = std::any_of(encodings.begin(), encodings.end(),
                                      [](const FrameEncoding& encoding) { return !encoding.isUndone; });
    const bool isSizeless = track.verdict->kind == "video" && track.entry.pixelWidth == 0;
    return isOpaque || isSizeless || (track.entry.codecId == "A_OPUS" && track.entry.codecPrivate.empty());
}

// Which mkvmerge refuses, and ffmpeg copies with a profile of its own.
bool isBareAac(const JudgedTrack& track) {
    return track.entry.codecId == "A_AAC" && track.entry.codecPrivate.empty();
}

void forEachFinding(CheckedFile& checked, const std::function<void(Finding&)>& change) {
    for (TrackVerdict& track : checked.tracks) {
        if (track.dropped) change(*track.dropped);
        for (Finding& finding : track.findings) change(finding);
    }
    for (Finding& finding : checked.findings) change(finding);
}

bool isTruncated(const CheckedFile& checked) {
    return std::any_of(checked.findings.begin(), checked.findings.end(),
                       [](const Finding& finding) { return finding.code == kTruncated; });
}

// No command brings back what is missing.
void adviseFetching(Finding& finding) {
    static const std::string kAdvice = "fetch the file again; or, for what there is of it: ";
    Remedy& remedy = finding.remedy;
    if (remedy.hasCommand() && remedy.text.compare(0, kAdvice.size(), kAdvice) != 0)
        remedy.text = kAdvice + remedy.text;
    else if (remedy.empty() && finding.code == kTruncated)
        remedy = Remedy("fetch the file again");
}

void settleForTools(const std::vector<JudgedTrack>& tracks, CheckedFile& checked) {
    if (std::any_of(tracks.begin(), tracks.end(), isEncrypted))
        return forEachFinding(checked, [](Finding& finding) { finding.remedy = {}; });
    const auto instead = [&](const Remedy& remedy) {
        forEachFinding(checked, [&](Finding& finding) {
            if (finding.remedy.action == Remedy::Action::kRewrite) finding.remedy = remedy;
        });
    };
    const auto bare = std::find_if(tracks.begin(), tracks.end(), isBareAac);
    if (bare != tracks.end())
        instead(recodeCommand(checked.path, 'a', bare->ordinal, "aac"));
    else if (std::any_of(tracks.begin(), tracks.end(), isLeftOutByRemux))
        instead(copyCommand(checked.path));
}

bool mostBlocksAre(uint64_t most, const CheckedFile& checked) {
    return !checked.tracks.empty() &&
           std::all_of(checked.tracks.begin(), checked.tracks.end(), [most](const TrackVerdict& track) {
               return track.counts && track.counts->blocks <= most;
           });
}

bool isOfSeeking(const Finding& finding) {
    return finding.code == "no_duration" || finding.code == "duration_cut" || finding.code == "no_cues";
}

// No muxer makes a track of nothing, nor gives a file of single units a length.
void settleForLack(CheckedFile& checked) {
    const bool isEmpty = mostBlocksAre(0, checked), isStill = mostBlocksAre(1, checked);
    forEachFinding(checked, [&](Finding& finding) {
        if (isEmpty || (isStill && (isTruncated(checked) || isOfSeeking(finding)))) finding.remedy = {};
    });
}

}  // namespace

void settleProposals(const std::vector<JudgedTrack>& tracks, CheckedFile& checked) {
    settleForTools(tracks, checked);
    settleForLack(checked);
    if (isTruncated(checked)) forEachFinding(checked, adviseFetching);
}

}  // namespace mkvx
