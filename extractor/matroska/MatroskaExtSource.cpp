#include "matroska/MatroskaExtSource.h"

#include <media/stagefright/MediaBuffer.h>
#include <media/stagefright/MediaErrors.h>
#include <media/stagefright/MetaData.h>
#include <limits.h>
#include <strings.h>

#include <algorithm>

#include "utils/MimeTypes.h"
#include "utils/NalRewrite.h"

namespace android {

using MatroskaExtReader::kTrackTypeSubtitle;

namespace {

int LengthsToStartCodes(unsigned char* data, int length) {
    return static_cast<int>(H264DataPreprocess_AVC(data, length));
}

// Whether the track's frames may have NAL lengths that the decoder wants as start codes.
bool MayHaveNalLengths(const sp<MetaData>& format) {
    const char* mime;
    int32_t width;
    return format->findInt32(kKeyWidth, &width) && format->findCString(kKeyMIMEType, &mime) &&
           (strcasecmp(mime, MEDIA_MIMETYPE_VIDEO_AVC) == 0 ||
            strcasecmp(mime, MEDIA_MIMETYPE_VIDEO_HEVC) == 0);
}

}  // namespace

MatroskaExtSource::MatroskaExtSource(const sp<MatroskaExtExtractor>& extractor, long long stripBlockPos,
                                     unsigned int stripSize, unsigned int trackIndex, Mutex* lock,
                                     unsigned int trackType)
    : mExtractor(extractor),
      mTrackIndex(trackIndex),
      mTrackType(trackType),
      mLock(lock),
      mIterator(extractor->File(), stripBlockPos, stripSize, extractor->Tracks()[trackIndex].mTrackNum,
                extractor.get()),
      mSubtitles(&extractor->File()->Subtitles),
      mPreprocess(H264DataPreprocess_IEC) {
    if (MayHaveNalLengths(extractor->Tracks()[trackIndex].mMeta)) mPreprocess = nullptr;
}

// Whoever lets it go: what the iterator holds of the file is shared with other sources.
MatroskaExtSource::~MatroskaExtSource() {
    Mutex::Autolock autoLock(*mLock);
    mIterator.Release();
}

status_t MatroskaExtSource::start(MetaData* /* params */) {
    Mutex::Autolock autoLock(*mLock);
    mIterator.reset();
    return OK;
}

status_t MatroskaExtSource::stop() {
    Mutex::Autolock autoLock(*mLock);
    mSubtitles->Clear();
    return OK;
}

sp<MetaData> MatroskaExtSource::getFormat() {
    Mutex::Autolock autoLock(*mLock);
    return mExtractor->Tracks()[mTrackIndex].mMeta;
}

status_t MatroskaExtSource::read(MediaBuffer** out, const ReadOptions* options) {
    Mutex::Autolock autoLock(*mLock);
    *out = nullptr;
    return mTrackType == kTrackTypeSubtitle ? ReadSubtitle(out, options) : ReadFrame(out, options);
}

status_t MatroskaExtSource::ReadSubtitle(MediaBuffer** out, const ReadOptions* options) {
    int64_t timeUs;
    ReadOptions::SeekMode mode;
    if (options != nullptr && options->getSeekTo(&timeUs, &mode)) {
        mSubtitles->Clear();  // it fills again as the master track is read from its new place
        return NOT_ENOUGH_DATA;
    }
    // Deliberate: takes TrackNumbers to run 1, 2, 3, ... in the order of the track table.
    *out = mSubtitles->TakeFor(mTrackIndex + 1);
    return *out != nullptr ? static_cast<status_t>(OK) : static_cast<status_t>(NOT_ENOUGH_DATA);
}

status_t MatroskaExtSource::ReadFrame(MediaBuffer** out, const ReadOptions* options) {
    const status_t err = mIterator.read(out, options);
    if (err != OK) return err;
    MediaBuffer* buffer = *out;
    if (buffer->range_length() > INT_MAX) return OK;  // longer than a rewriter can be told
    unsigned char* data = static_cast<unsigned char*>(buffer->data());
    const int length = static_cast<int>(buffer->range_length());
    if (mPreprocess == nullptr) {
        mPreprocess = CheckH264Type(data, length) == 0 ? H264DataPreprocess_IEC : LengthsToStartCodes;
    }
    const int whole = mPreprocess(data, length);
    // The rewriter lets a last length reach up to four bytes past the frame.
    if (whole != length && whole > 0) buffer->set_range(0, static_cast<size_t>(std::min(whole, length)));
    return OK;
}

}  // namespace android
