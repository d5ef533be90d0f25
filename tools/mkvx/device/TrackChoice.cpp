#include "device/TrackChoice.h"

#include <fmt/format.h>
#include <charconv>

#include "base/Failure.h"
#include "base/Text.h"

namespace mkvx {
namespace {

bool isMeant(const TrackInfo& track, const TrackChoice& choice) {
    return choice.value == (choice.isNumber ? track.number : track.index);
}

std::string lackText(const FileInfo& info, const TrackChoice& choice) {
    const std::string wanted = fmt::format(
        choice.isNumber ? "no offered track has the track number {}" : "there is no index {}", choice.value);
    if (info.tracks.empty())
        return fmt::format("{}: {}, the file offers no track (mkvx check says why)", info.path, wanted);
    return fmt::format("{}: {}, the file offers {}{} (mkvx info lists them)", info.path, wanted,
                       counted(info.tracks.size(), "track"), choice.isNumber ? "" : ", counted from 0");
}

}  // namespace

std::optional<TrackChoice> parseTrackChoice(const std::string& text) {
    TrackChoice choice;
    choice.isNumber = text.compare(0, 1, "#") == 0;
    const char* const begin = text.data() + (choice.isNumber ? 1 : 0);
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(begin, end, choice.value);
    if (begin == end || error != std::errc() || stop != end) return std::nullopt;
    return choice;
}

const TrackInfo& requireTrack(const FileInfo& info, const TrackChoice& choice) {
    for (const TrackInfo& track : info.tracks)
        if (isMeant(track, choice)) return track;
    throw UsageFailure(lackText(info, choice));
}

const TrackInfo* chosenTrack(const FileInfo& info, const std::optional<TrackChoice>& choice) {
    return choice ? &requireTrack(info, *choice) : nullptr;
}

}  // namespace mkvx
