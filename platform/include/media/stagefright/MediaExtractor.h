// MediaExtractor: takes a medium apart into tracks.
//
// Made by a plug-in's factory function with no reference: the caller puts it into an sp<> at once. The order
// of the virtual functions is the device's.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

#include <utils/RefBase.h>

#include <media/stagefright/DataSource.h>

namespace android {

struct MediaSource;
class MetaData;

class MediaExtractor : public RefBase {
  public:
    enum GetTrackMetaDataFlags {
        // Also what costs time to find out, such as the time of a thumbnail.
        kIncludeExtensiveMetaData = 1,
    };

    enum Flags {
        CAN_SEEK_BACKWARD = 1,
        CAN_SEEK_FORWARD = 2,
        CAN_PAUSE = 4,
        CAN_SEEK = 8,
    };

    // The extractor for `source`: of the given container MIME type, compared ignoring case, or of what
    // sniffing finds. Null when no plug-in takes it (see host/ExtractorPlugin.h for how plug-ins get known).
    static sp<MediaExtractor> Create(const sp<DataSource>& source, const char* mime = NULL);

    virtual size_t countTracks() = 0;
    virtual sp<MediaSource> getTrack(size_t index) = 0;
    virtual sp<MetaData> getTrackMetaData(size_t index, uint32_t flags = 0) = 0;
    // About the whole file. Here: a new, empty one.
    virtual sp<MetaData> getMetaData();
    // A union of Flags. Here: all.
    virtual uint32_t flags() const;
    virtual char* getDrmTrackInfo(size_t trackID, int* len);
    virtual void setUID(uid_t uid);

    void setDrmFlag(bool isDrm) { mIsDrm = isDrm; }
    bool getDrmFlag() { return mIsDrm; }

  protected:
    MediaExtractor() : mIsDrm(false) {}
    ~MediaExtractor() override {}

  private:
    bool mIsDrm;

    MediaExtractor(const MediaExtractor&);
    MediaExtractor& operator=(const MediaExtractor&);
};

}  // namespace android
