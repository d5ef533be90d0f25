// What the plug-in's own interface does not tell, read with a second extractor that is linked into this
// program: the file's own track numbers and why tracks are dropped, the index, the losses, and where a track
// really ends.
//
// The second extractor reads the same bytes by the same code, so both agree track by track. Its log records
// would only repeat the plug-in's and are dropped. Construction can end the process exactly where the
// plug-in's does: try that first (Trial.h). One thread.
#pragma once
#include <media/stagefright/DataSource.h>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "device/FileHead.h"
#include "device/Model.h"
#include "device/SyncIndex.h"

namespace mkvx {

// A track that the plug-in offers.
struct OfferedTrack {
    uint32_t number = 0;  // TrackNumber, its low 32 bits
    TrackKind kind = TrackKind::kVideo;
};

// Walks one track's units in step with a source, to tell "a unit that could not be read" from "the end": a
// source answers both with end of stream.
class TwinCursor {
  public:
    virtual ~TwinCursor() = default;
    // Does what one read() of the track's source does, without its result.
    virtual void step() = 0;
    // The last step() found nothing more.
    virtual bool atEnd() const = 0;
    // Where in the file the payload begins of the block that the last step() took; 0 where that is not known.
    virtual uint64_t position() const = 0;
    // Bytes of the unit that the last step() took, before lengths of NAL units became start codes; 0 for
    // none.
    virtual size_t size() const = 0;
};

// Gets each subtitle event that reading the master track brings up, after the merging of events: the
// TrackNumber of its block, and its bytes.
using OnEvent = std::function<void(uint64_t trackNumber, size_t size)>;

class OwnReader {
  public:
    explicit OwnReader(const android::sp<android::DataSource>& source);
    ~OwnReader();
    OwnReader(const OwnReader&) = delete;
    OwnReader& operator=(const OwnReader&) = delete;

    const FileHead& head() const;
    // In the framework's index order.
    std::vector<OfferedTrack> offered() const;
    // For each TrackEntry, in the order of the file: why it is dropped; nothing for those that are offered.
    std::vector<std::optional<DropReason>> drops() const;

    IndexReport index() const;
    // Every place that a cue point of the file names, in the order of the file; not those that a scan made.
    void forEachCue(const std::function<void(const CuePlace&)>& take) const;
    struct AstrayCues {
        uint64_t count = 0;
        uint64_t first = 0;  // the position that the first of them names
    };
    // Looks where the master track's cue points lead, up to a bound on their number: which find no Cluster?
    AstrayCues masterCuesAstray() const;

    // A cursor before the track's first unit. It reads through this object, which has to outlive it. Events
    // are collected only where there is somebody to take them.
    std::unique_ptr<TwinCursor> cursor(uint32_t trackNumber, OnEvent onEvent = nullptr) const;

  private:
    struct State;
    std::unique_ptr<State> mState;
};

}  // namespace mkvx
