// The verdict on each TrackEntry: offered, as what and with what; or not, and why. The reasons are those
// that track discovery noted when it decided; only their wording, and where the deciding element stands, are
// added here.
#pragma once
#include <vector>

#include "check/Model.h"
#include "device/FileHead.h"
#include "device/Model.h"

namespace mkvx {

// A TrackEntry beside what is said of it.
struct JudgedTrack {
    FileTrack entry;
    TrackVerdict* verdict;
    size_t place;    // among all entries of the file, from 0
    size_t ordinal;  // among those of its kind, from 0
};

// Fills `checked.tracks`, one for each entry of the file. Nothing is offered yet.
std::vector<JudgedTrack> listTracks(const FileHead& head, CheckedFile& checked);

// Why discovery dropped this track.
Finding explainDrop(const FileHead& head, const std::string& path, const JudgedTrack& track,
                    DropReason reason);

// Facts about an offered track that its entry, or what was made of it, tells: encodings, configuration,
// names, sizes.
void judgeOffered(const FileHead& head, const std::string& path, const JudgedTrack& track,
                  const TrackInfo& offer);

// The same of one that is not offered, as far as it matters for what could be made of it: that nobody can
// read its frames.
void judgeDropped(const FileHead& head, const JudgedTrack& track);

// A track whose headers end the process, if it is one.
std::optional<Finding> explainVorbisStop(const FileHead& head, const std::string& path,
                                         const JudgedTrack& track);

}  // namespace mkvx
