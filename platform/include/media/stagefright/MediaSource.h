// MediaSource: one track's access units, one after the other.
//
// RefBase is a virtual base, as on the device: no static_cast from RefBase* to MediaSource*. The order of the
// virtual functions is the device's. All buffers that were read have to be released before stop().
#pragma once

#include <stdint.h>
#include <sys/types.h>

#include <utils/RefBase.h>
#include <utils/Vector.h>

#include <media/stagefright/MediaErrors.h>

namespace android {

class MediaBuffer;
class MetaData;

struct MediaSource : public virtual RefBase {
    MediaSource();

    // Before anything but getFormat(); after stop() only start() may follow.
    virtual status_t start(MetaData* params = NULL) = 0;
    virtual status_t stop() = 0;
    virtual sp<MetaData> getFormat() = 0;

    struct ReadOptions;

    // OK with the next unit, which the caller releases; ERROR_END_OF_STREAM, INFO_FORMAT_CHANGED or another
    // error with *buffer null.
    virtual status_t read(MediaBuffer** buffer, const ReadOptions* options = NULL) = 0;

    // Optional. Here: ERROR_UNSUPPORTED.
    virtual status_t pause();
    virtual status_t setBuffers(const Vector<MediaBuffer*>& buffers);

  protected:
    ~MediaSource() override;

  private:
    MediaSource(const MediaSource&);
    MediaSource& operator=(const MediaSource&);
};

// What a read may ask for beyond "the next unit". Times are microseconds.
struct MediaSource::ReadOptions {
    enum SeekMode : int32_t {
        SEEK_PREVIOUS_SYNC,
        SEEK_NEXT_SYNC,
        SEEK_CLOSEST_SYNC,
        SEEK_CLOSEST,
    };

    ReadOptions() { reset(); }

    // No seek, time 0, not late, blocking. The seek mode keeps its value.
    void reset();

    void setSeekTo(int64_t time_us, SeekMode mode = SEEK_CLOSEST_SYNC);
    void clearSeekTo();
    // Whether a seek was asked for. Writes both outputs in any case; they mean nothing when it was not.
    bool getSeekTo(int64_t* time_us, SeekMode* mode) const;

    // How late the player is.
    void setLateBy(int64_t lateness_us) { mLatenessUs = lateness_us; }
    int64_t getLateBy() const { return mLatenessUs; }

    void setNonBlocking() { mNonBlocking = true; }
    void clearNonBlocking() { mNonBlocking = false; }
    bool getNonBlocking() const { return mNonBlocking; }

  private:
    enum Options : uint32_t { kSeekTo = 1 };

    uint32_t mOptions = 0;
    int64_t mSeekTimeUs = 0;
    SeekMode mSeekMode =
        SEEK_CLOSEST_SYNC;  // Deliberate: defined, so that reading it without a seek is no fault here.
    int64_t mLatenessUs = 0;
    bool mNonBlocking = false;
};

}  // namespace android
