// A pass over everything that the offered tracks deliver.
#pragma once
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "check/Stream.h"
#include "check/Tracks.h"
#include "device/Session.h"

namespace mkvx {

// What was queued of the subtitle blocks of one TrackNumber, after merging.
struct EventTally {
    uint64_t records = 0, bytes = 0;
};
using EventTallies = std::map<uint64_t, EventTally>;  // by TrackNumber

struct UnitPass {
    EventTallies events;
    std::optional<int64_t> lastUs;   // the latest start of a video or audio unit
    std::deque<StreamProbe> probes;  // one for each track that was read, to be finished
};

// Reads each offered track to its end as a player does that goes on past units it cannot get, the track that
// is furthest behind first, and takes subtitle events as soon as they are there. Adds to the tracks' counts,
// which are there, and findings, but for subtitles. Keeps no more than a unit a track. `onBytes`, where there
// is one, gets the size of each unit.
UnitPass readAllUnits(const Session& session, const std::string& path, const std::vector<JudgedTrack>& tracks,
                      const std::function<void(uint64_t)>& onBytes);

}  // namespace mkvx
