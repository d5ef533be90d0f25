// Which track --track means, the same in every command: an index, as the framework counts the offered tracks
// from 0, or # and the file's own TrackNumber.
#pragma once
#include <cstdint>
#include <optional>
#include <string>

#include "device/Model.h"

namespace mkvx {

struct TrackChoice {
    bool isNumber = false;
    uint64_t value = 0;  // an index, or a TrackNumber
};

// "1": the index 1; "#2": the track number 2. Nothing for any other text.
std::optional<TrackChoice> parseTrackChoice(const std::string& text);

// The offered track that is meant; of several with one number the first. Throws UsageFailure when there is
// none.
const TrackInfo& requireTrack(const FileInfo& info, const TrackChoice& choice);

// The same, and null without a choice.
const TrackInfo* chosenTrack(const FileInfo& info, const std::optional<TrackChoice>& choice);

}  // namespace mkvx
