// Filling the report's model from a file that was examined. Reads the whole file, once for each track and
// more. One thread.
#pragma once
#include <functional>
#include <string>

#include "base/Progress.h"
#include "device/Plugin.h"
#include "device/Session.h"
#include "report/Model.h"

namespace mkvx {

// `checked` is an examination of the file with its units. What would end this process is not read again: the
// page then holds the verdict alone. Throws FileFailure when the file has changed for the worse meanwhile.
ReportPage collectReport(const ExtractorPlugin& plugin, const CheckedFile& checked,
                         const SourceOptions& source, ProgressStyle style);

// ---- its parts

// Every unit of a track. `most` bounds each of the two lists of units; `reached` hears how far in the file
// the pass has come.
TrackTimeline readTimeline(const Session& session, const TrackInfo& track, size_t most,
                           const std::function<void(uint64_t position)>& reached);

// The elements of the Segment one after the other, Clusters with their blocks counted; payloads are not read.
FileLayout readLayout(const android::sp<android::DataSource>& source);

// What the document holds beside tracks: titles, cue points by track, index entries, chapters, attachments.
// The timelines have to be there.
void readContents(const Session& session, ReportPage& page);

// What the reader has lost up to now.
void readLosses(const OwnReader& reader, ReportPage& page);

}  // namespace mkvx
