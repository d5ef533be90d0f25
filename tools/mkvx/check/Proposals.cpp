#include "check/Proposals.h"

#include <algorithm>
#include <functional>

#include "check/Remedy.h"

namespace mkvx {
namespace {

bool isEncrypted(const JudgedTrack& track) {
    const auto& encodings = track.entry.encodings;
    return std::any_of(encodings.begin(), encodings.end(),
                       [](const FrameEncoding& encoding) { return encoding.isEncryption; });
}

// mkvmerge undoes what the plug-in undoes, and takes Opus by its header.
bool isLeftOutByRemux(const JudgedTrack& track) {
    const auto& encodings = track.entry.encodings;
    const bool isOpaque = std::any_of(encodings.begin(), encodings.end(),
                                      [](const FrameEncoding& encoding) { return !encoding.isUndone; });
    return isOpaque || (track.entry.codecId == "A_OPUS" && track.entry.codecPrivate.empty());
}

void forEachFinding(CheckedFile& checked, const std::function<void(Finding&)>& change) {
    for (TrackVerdict& track : checked.tracks) {
        if (track.dropped) change(*track.dropped);
        for (Finding& finding : track.findings) change(finding);
    }
    for (Finding& finding : checked.findings) change(finding);
}

}  // namespace

void settleProposals(const std::vector<JudgedTrack>& tracks, CheckedFile& checked) {
    if (std::any_of(tracks.begin(), tracks.end(), isEncrypted))
        return forEachFinding(checked, [](Finding& finding) { finding.remedy = {}; });
    if (std::none_of(tracks.begin(), tracks.end(), isLeftOutByRemux)) return;
    forEachFinding(checked, [&](Finding& finding) {
        if (finding.remedy.action == Remedy::Action::kRewrite) finding.remedy = copyCommand(checked.path);
    });
}

}  // namespace mkvx
