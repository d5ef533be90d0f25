// The source of one track's frames, as the framework pulls them.
//
// Sources of one extractor may be driven from different threads: every entry point holds the extractor's one
// lock for its whole run, since all sources share the file's read position, its block runs and its subtitle
// queue. A source keeps its extractor alive. A buffer that read hands out belongs to the caller, who releases
// it.
#pragma once

#include <utils/Errors.h>
#include <utils/String8.h>
#include <utils/Mutex.h>
#include <media/stagefright/MediaSource.h>

#include <stdint.h>

#include "matroska/MatroskaExtExtractor.h"
#include "matroska/MatroskaExtIterator.h"
#include "utils/ThreadSafety.h"

namespace android {

class MatroskaExtSource : public MediaSource {
  public:
    MatroskaExtSource(const sp<MatroskaExtExtractor>& extractor, long long stripBlockPos,
                      unsigned int stripSize, unsigned int trackIndex, Mutex* lock, unsigned int trackType);

    // Rewinds to the first Cluster; `params` is ignored. Reading before it gives end of stream.
    status_t start(MetaData* params) override;
    // Discards the queued subtitles of every track.
    status_t stop() override;
    // The track's own metadata object, not a copy.
    sp<MetaData> getFormat() override;
    // OK and a buffer, or ERROR_END_OF_STREAM. A subtitle track's source never ends: without an event in the
    // queue it answers NOT_ENOUGH_DATA, and so it does to a seek, which empties the queue.
    status_t read(MediaBuffer** out, const ReadOptions* options) override;

  protected:
    ~MatroskaExtSource() override;

  private:
    status_t ReadSubtitle(MediaBuffer** out, const ReadOptions* options) REQUIRES(mLock);
    status_t ReadFrame(MediaBuffer** out, const ReadOptions* options) REQUIRES(mLock);

    // Rewrites a frame in place and answers how many of its bytes are whole afterwards.
    typedef int (*Preprocess)(unsigned char* data, int length);

    const sp<MatroskaExtExtractor> mExtractor;  // of which a source uses what never changes, and its file
    const uint32_t mTrackIndex;
    const uint32_t mTrackType;
    Mutex* const mLock;  // the extractor's
    MatroskaExtIterator mIterator GUARDED_BY(mLock);
    MatroskaExtReader::SubtitleQueue* const mSubtitles PT_GUARDED_BY(mLock);  // the file's
    Preprocess mPreprocess GUARDED_BY(mLock);  // null: decided on the first frame
};

}  // namespace android
