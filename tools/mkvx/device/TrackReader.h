// Reading units out of a source the way a player does.
#pragma once
#include <media/stagefright/MediaBuffer.h>
#include <media/stagefright/MediaSource.h>
#include <memory>

#include "base/Digest.h"
#include "device/Model.h"
#include "device/OwnReader.h"

namespace mkvx {

struct ReleaseBuffer {
    void operator()(android::MediaBuffer* buffer) const { buffer->release(); }
};
using BufferPtr = std::unique_ptr<android::MediaBuffer, ReleaseBuffer>;

// One started source. Without a twin its reading ends, as a player's does, at the first answer that is not a
// unit. With one it goes on past units that could not be read and ends where the twin finds the track's end;
// the file bounds that, since each step either passes a block or ends.
class TrackReader {
  public:
    // Starts the source; it is stopped when this object goes. Throws std::runtime_error when it does not
    // start.
    explicit TrackReader(const android::sp<android::MediaSource>& source,
                         std::unique_ptr<TwinCursor> twin = nullptr);
    ~TrackReader();
    TrackReader(const TrackReader&) = delete;
    TrackReader& operator=(const TrackReader&) = delete;

    // The next unit; null at the end, and after an interruption.
    BufferPtr next();
    // Answers that were no unit and not the end; counted only with a twin.
    size_t unreadable() const { return mUnreadable; }
    // Where in the file the payload begins of the block that the last unit came from; 0 without a twin.
    uint64_t position() const { return mTwin ? mTwin->position() : 0; }
    // Bytes of the last unit as it is stored, before lengths of NAL units became start codes; 0 without a
    // twin.
    size_t storedSize() const { return mTwin ? mTwin->size() : 0; }
    // After next() gave null without a twin: does the source go on? Reads one unit further to find out, so a
    // run of two unreadable units passes for the end.
    bool endedEarly();

  private:
    BufferPtr readOnce();

    android::sp<android::MediaSource> mSource;
    std::unique_ptr<TwinCursor> mTwin;
    size_t mUnreadable = 0;
};

// The model's view of a delivered buffer, but for its digest.
Unit describeUnit(const TrackInfo& track, android::MediaBuffer& buffer);
Unit describeUnit(const TrackInfo& track, android::MediaBuffer& buffer, Sha1& sha1);

}  // namespace mkvx
