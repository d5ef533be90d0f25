// The extractor of one file, as the framework sees it: its track table, the file's metadata, a source per
// track.
//
// Construction opens the file, builds the sync index and discovers the tracks, all on the caller's thread; a
// file that cannot be read gives an extractor without tracks. The extractor owns the file; every source holds
// a strong reference to the extractor. Its own operations take no lock and must not run while a source does.
#pragma once

#include <utils/Errors.h>
#include <utils/String8.h>
#include <utils/Mutex.h>
#include <utils/Vector.h>
#include <media/stagefright/MediaExtractor.h>
#include <media/stagefright/MetaData.h>

#include <stdint.h>

#include <memory>

#include "matroska/TrackDiscovery.h"
#include "matroska/reader/MatroskaReader.h"

namespace android {

class DataSource;
struct MediaSource;

class MatroskaExtExtractor : public MediaExtractor {
  public:
    struct TrackInfo {
        TrackInfo() : mTrackNum(0), mExtraPos(0), mExtraSize(0), mType(0) {}

        uint32_t mTrackNum;  // Matroska TrackNumber
        int64_t mExtraPos;   // block whose first mExtraSize bytes became the codec configuration; 0: none
        uint32_t mExtraSize;
        sp<MetaData> mMeta;  // shared with the framework and the sources
        uint32_t mType;      // Matroska TrackType
    };

    explicit MatroskaExtExtractor(const sp<DataSource>& source);

    size_t countTracks() override;
    // A new source at each call; empty when there is no such track.
    sp<MediaSource> getTrack(size_t index) override;
    sp<MetaData> getTrackMetaData(size_t index, uint32_t flags) override;
    sp<MetaData> getMetaData() override;

    const Vector<TrackInfo>& Tracks() const { return mTracks; }
    MatroskaExtReader::CMatroskaFile* File() const { return mFile.get(); }
    uint32_t SubtitleCount() const { return mSubtitleCount; }
    // Tracks of the file that are not in the track table, and why.
    const MatroskaExtReader::Array<DroppedTrack>& DroppedTracks() const { return mDroppedTracks; }

  protected:
    ~MatroskaExtExtractor() override;

  private:
    void BuildIndex(const sp<DataSource>& source);
    void addTracks();
    void AddTrack(const MatroskaExtReader::TrackEntry& entry);
    void findThumbnails();

    Mutex mLock;  // of the sources: they share mFile
    Vector<TrackInfo> mTracks;
    std::unique_ptr<MatroskaExtReader::CMatroskaFile> mFile;
    bool mThumbnailsFound;
    uint32_t mSubtitleCount;  // Deliberate: stays 0, see AddTrack
    MatroskaExtReader::Array<DroppedTrack> mDroppedTracks;
};

}  // namespace android
