// What the plug-in's own interface does not tell, read with a second extractor that is linked into this
// program: the Matroska track numbers, the master track, and where a track really ends.
//
// The second extractor reads the same bytes by the same code, so both agree track by track. Its log records
// would only repeat the plug-in's and are dropped. Construction can end the process exactly where the
// plug-in's does: try that first (Probe.h). One thread.
#pragma once
#include <media/stagefright/DataSource.h>
#include <cstdint>
#include <memory>
#include <vector>

#include "device/Model.h"

namespace android {
class MatroskaExtExtractor;
}

namespace mkvx {

struct OfferedTrack {
    uint32_t number = 0;
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
    virtual uint64_t position() const { return 0; }
};

class OwnReader {
  public:
    explicit OwnReader(const android::sp<android::DataSource>& source);
    ~OwnReader();
    OwnReader(const OwnReader&) = delete;
    OwnReader& operator=(const OwnReader&) = delete;

    // In the framework's index order.
    std::vector<OfferedTrack> offered() const;
    // TrackEntries in the file, offered or not.
    size_t entryCount() const;
    uint64_t masterTrack() const;
    // The extractor itself, for what this class does not tell.
    android::sp<android::MatroskaExtExtractor> extractor() const;
    // A cursor before the track's first unit. It reads through this object, which has to outlive it.
    std::unique_ptr<TwinCursor> cursor(uint32_t trackNumber) const;

  private:
    struct State;
    std::unique_ptr<State> mState;
};

}  // namespace mkvx
