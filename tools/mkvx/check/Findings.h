// What is to be said of a file once it was opened, and once it was read through.
#pragma once
#include <vector>

#include "check/Bytes.h"
#include "check/Extras.h"
#include "check/Model.h"
#include "check/Tracks.h"
#include "check/Units.h"
#include "device/OwnReader.h"

namespace mkvx {

// A document that opening gave up on, or that has no track.
void judgeDocument(const FileHead& head, const android::sp<android::DataSource>& source,
                   CheckedFile& checked);

// Where seeks go: duration, index, and whether the cue points help; where there are none, why. `lastUs`: the
// start of the last unit, where all were read.
void judgeSeeking(const Session& session, std::optional<int64_t> lastUs, CheckedFile& checked);

// What the reader noted as lost, but for what the two passes count better.
void judgeLosses(const FileHead& head, CheckedFile& checked);

// Damage, truncation, Segments and blocks that lead nowhere.
void judgeStructure(const FileHead& head, const ByteAccount& account, CheckedFile& checked);

// Fills in what of each track arrives, and with it the shares of the file's bytes.
void judgeDelivery(const FileHead& head, const std::vector<JudgedTrack>& tracks, const ByteAccount& account,
                   const EventTallies& events, CheckedFile& checked);

// What a file holds that a device does not show.
void judgeExtras(const FileHead& head, const Extras& extras, CheckedFile& checked);

// Subtitle tracks whose events cannot arrive by what opening tells alone.
void judgeSubtitles(const Session& session, const std::vector<JudgedTrack>& tracks, CheckedFile& checked);

}  // namespace mkvx
