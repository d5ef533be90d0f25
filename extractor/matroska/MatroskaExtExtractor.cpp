#define LOG_TAG "MatroskaExtExtractor"
#include "matroska/MatroskaExtExtractor.h"

#include <android/log.h>
#include <media/stagefright/DataSource.h>
#include <string.h>
#include <strings.h>

#include "matroska/FatalCheck.h"
#include "matroska/MatroskaExtSource.h"
#include "utils/MimeTypes.h"

namespace android {

using namespace MatroskaExtReader;

MatroskaExtExtractor::MatroskaExtExtractor(const sp<DataSource>& source)
    : mFile(new CMatroskaFile(source)), mThumbnailsFound(false), mSubtitleCount(0) {
    const CMatroskaFile::Opening opening(mFile.get());
    if (Failed(mFile->Init())) return;
    BuildIndex(source);
    addTracks();
}

MatroskaExtExtractor::~MatroskaExtExtractor() {}

// A source that caches what it fetches over a network is not made to visit every Cluster.
void MatroskaExtExtractor::BuildIndex(const sp<DataSource>& source) {
    if ((source->flags() & DataSource::kIsCachingDataSource) != 0) {
        __android_log_print(ANDROID_LOG_DEBUG, LOG_TAG, "mkv http source");
        return;
    }
    if (mFile->Segment.Cues.isEmpty()) mFile->RebuildIndex();
    (void)mFile->BuildIndexForSync();
}

void MatroskaExtExtractor::addTracks() {
    for (const AutoPtr<Track>& tracks : mFile->Segment.Tracks) {
        for (const AutoPtr<TrackEntry>& entry : tracks->Entries) AddTrack(*entry);
    }
}

// Deliberate: a subtitle track never counts into mSubtitleCount. The count was meant for subtitle tracks that
// come through the codec tables, and none does; the merging of events depends on its staying 0.
void MatroskaExtExtractor::AddTrack(const TrackEntry& entry) {
    const DiscoveredTrack track = DiscoverTrack(mFile.get(), entry);
    if (track.mCountsAsSubtitle) ++mSubtitleCount;
    if (track.mDrop != DropReason::kNone) {
        (void)mDroppedTracks.Append(DroppedTrack{entry.TrackNumber.Get(), entry.Position, track.mDrop});
        return;
    }
    const ssize_t place = mTracks.add();
    if (place < 0) {
        mFile->Losses.Add(LossKind::kRefusedAllocation, entry.Position, 0);
        return;
    }
    TrackInfo* info = &mTracks.editItemAt(static_cast<size_t>(place));
    info->mTrackNum = static_cast<uint32_t>(entry.TrackNumber.Get());
    info->mExtraPos = track.mExtraPos;
    info->mExtraSize = track.mExtraSize;
    info->mMeta = track.mMeta;
    info->mType = static_cast<uint32_t>(entry.TrackType.Get());
}

size_t MatroskaExtExtractor::countTracks() {
    return mTracks.size();
}

sp<MediaSource> MatroskaExtExtractor::getTrack(size_t index) {
    if (index >= mTracks.size()) return nullptr;
    const TrackInfo& info = mTracks[index];
    return new MatroskaExtSource(this, info.mExtraPos, info.mExtraSize, static_cast<unsigned int>(index),
                                 &mLock, info.mType);
}

sp<MetaData> MatroskaExtExtractor::getTrackMetaData(size_t index, uint32_t flags) {
    if (index >= mTracks.size()) return nullptr;
    if ((flags & kIncludeExtensiveMetaData) != 0 && !mThumbnailsFound) {
        findThumbnails();
        mThumbnailsFound = true;
    }
    return mTracks[index].mMeta;
}

sp<MetaData> MatroskaExtExtractor::getMetaData() {
    const CNode<Track>& tracks = mFile->Segment.Tracks;
    const char* mime = MEDIA_MIMETYPE_CONTAINER_MATROSKA;
    if (strcmp(mFile->Header.DocType.c_str(), "webm") == 0) {
        mime = MEDIA_MIMETYPE_CONTAINER_WEBM;
    } else if (tracks.size() == 1 && tracks[0]->Entries.size() == 1 &&
               tracks[0]->Entries[0]->TrackType.Get() == kTrackTypeAudio) {
        mime = MEDIA_MIMETYPE_CONTAINER_MKA;
    }
    sp<MetaData> meta = new MetaData;
    meta->setCString(kKeyMIMEType, mime);
    return meta;
}

// The first video track gets a quarter of the duration; no frame is looked at.
void MatroskaExtExtractor::findThumbnails() {
    for (size_t i = 0; i < mTracks.size(); ++i) {
        const char* mime;
        if (!mTracks[i].mMeta->findCString(kKeyMIMEType, &mime)) {
            // clang-format off
            FailCheck("!(info->mMeta->findCString(kKeyMIMEType, &mime))",
                      "frameworks/av/media/libstagefright/corvo/extractor/matroska/MatroskaExtExtractor:1276 CHECK(info->mMeta->findCString(kKeyMIMEType, &mime)) failed.");
            // clang-format on
        }
        if (strncasecmp(mime, "video/", 6) != 0) continue;
        const uint64_t durationUs = static_cast<uint64_t>(DurationUs(*mFile));
        mTracks[i].mMeta->setInt64(kKeyThumbnailTime, static_cast<int64_t>(durationUs >> 2));
        return;
    }
}

}  // namespace android
