// From findings to a verdict.
#include <fmt/format.h>
#include <algorithm>
#include <set>

#include "base/Text.h"
#include "check/File.h"

namespace mkvx {
namespace {

Weight worstOf(const std::vector<Finding>& findings) {
    Weight worst = Weight::kNote;
    for (const Finding& finding : findings) worst = std::max(worst, finding.weight);
    return worst;
}

const Finding* firstOf(const std::vector<Finding>& findings, Weight weight) {
    const auto found = std::find_if(findings.begin(), findings.end(),
                                    [&](const Finding& finding) { return finding.weight == weight; });
    return found == findings.end() ? nullptr : &*found;
}

std::string about(const TrackVerdict& track) {
    return fmt::format("track number {} ({})", track.number, track.kind);
}

// The finding that keeps a track from playing, or null.
const Finding* obstacleOf(const TrackVerdict& track) {
    if (track.dropped) return &*track.dropped;
    const Finding* fatal = firstOf(track.findings, Weight::kFatal);
    return fatal != nullptr ? fatal : firstOf(track.findings, Weight::kMute);
}

// The first track's obstacle when no track of the kind plays, though the file has some: "no sound: track
// number 2: ..."; else empty. What was told is put into `told`.
std::string missing(const CheckedFile& checked, const char* kind, const std::string& lack,
                    std::set<const Finding*>& told) {
    const TrackVerdict* first = nullptr;
    for (const TrackVerdict& track : checked.tracks) {
        if (track.kind != kind) continue;
        if (plays(track)) return {};
        if (first == nullptr) first = &track;
    }
    const Finding* obstacle = first != nullptr ? obstacleOf(*first) : nullptr;
    if (obstacle == nullptr) return {};
    told.insert(obstacle);
    const std::string& sentence = obstacle->sentence;
    const bool saysSo = sentence.compare(0, lack.size() + 2, lack + ": ") == 0;
    return fmt::format("{}: track number {}: {}", lack, first->number,
                       saysSo ? sentence.substr(lack.size() + 2) : sentence);
}

std::string fatalReason(const CheckedFile& checked) {
    for (const TrackVerdict& track : checked.tracks)
        if (track.dropped && track.dropped->weight == Weight::kFatal)
            return about(track) + ": " + track.dropped->sentence;
    for (const TrackVerdict& track : checked.tracks)
        if (const Finding* fatal = firstOf(track.findings, Weight::kFatal))
            return about(track) + ": " + fatal->sentence;
    const Finding* fatal = firstOf(checked.findings, Weight::kFatal);
    return fatal != nullptr ? fatal->sentence : std::string();
}

std::string nothingReason(const CheckedFile& checked) {
    if (const Finding* mute = firstOf(checked.findings, Weight::kMute)) return mute->sentence;
    for (const TrackVerdict& track : checked.tracks)
        if (const Finding* obstacle = obstacleOf(track)) return about(track) + ": " + obstacle->sentence;
    return "it has no track that could play";
}

// All that is less than it could be, the most telling first.
std::vector<std::string> losses(const CheckedFile& checked) {
    std::vector<std::string> found;
    std::set<const Finding*> told;
    for (const auto& [kind, lack] : {std::pair("video", "no picture"), std::pair("audio", "no sound"),
                                     std::pair("subtitle", "no subtitle appears")}) {
        const std::string text = missing(checked, kind, lack, told);
        if (!text.empty()) found.push_back(text);
    }
    for (const Weight weight : {Weight::kMute, Weight::kLoss}) {
        for (const TrackVerdict& track : checked.tracks) {
            if (weight == Weight::kMute && !plays(track)) {
                const Finding* obstacle = obstacleOf(track);
                if (obstacle != nullptr && told.count(obstacle) == 0)
                    found.push_back(fmt::format("track number {}: {}", track.number, obstacle->sentence));
            }
            if (weight == Weight::kLoss)
                for (const Finding& finding : track.findings)
                    if (finding.weight == weight)
                        found.push_back(fmt::format("track number {}: {}", track.number, finding.sentence));
        }
        for (const Finding& finding : checked.findings)
            if (finding.weight == weight) found.push_back(finding.sentence);
    }
    return found;
}

bool isFatal(const CheckedFile& checked) {
    if (worstOf(checked.findings) == Weight::kFatal) return true;
    return std::any_of(checked.tracks.begin(), checked.tracks.end(), [](const TrackVerdict& track) {
        return worstOf(track.findings) == Weight::kFatal ||
               (track.dropped && track.dropped->weight == Weight::kFatal);
    });
}

}  // namespace

bool plays(const TrackVerdict& track) {
    return track.isOffered() && worstOf(track.findings) < Weight::kMute;
}

void decide(CheckedFile& checked) {
    const bool anyPlays = std::any_of(checked.tracks.begin(), checked.tracks.end(), plays) &&
                          worstOf(checked.findings) < Weight::kMute;
    if (isFatal(checked)) {
        checked.verdict = Verdict::kStops;
        checked.reason = fatalReason(checked);
    } else if (!anyPlays) {
        checked.verdict = Verdict::kNothingPlays;
        checked.reason = nothingReason(checked);
    } else {
        const std::vector<std::string> found = losses(checked);
        checked.verdict = found.empty() ? Verdict::kPlays : Verdict::kPlaysWithLosses;
        checked.reason = found.empty() ? std::string() : found.front();
        if (found.size() > 1) checked.reason += fmt::format("; and {} more", found.size() - 1);
    }
}

}  // namespace mkvx
