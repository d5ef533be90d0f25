// From a parsed TrackEntry to what the framework is told about the track: its MIME type and metadata, or the
// reason why it is not offered.
//
// Runs while the extractor is constructed, before any source exists. Conversions of the codec private data
// may read the first frames of the track.
#pragma once

#include <utils/Errors.h>
#include <utils/String8.h>
#include <media/stagefright/MetaData.h>

#include <stdint.h>

#include "matroska/reader/MatroskaReader.h"

namespace android {

enum class DropReason {
    kNone,
    kSubtitleKind,    // subtitles that no MIME type is known for
    kUnmappedCodec,   // the codec tag maps to no MIME type
    kTrackType,       // neither video, audio nor subtitle
    kAacNoProfile,    // AAC without configuration, and the codec ID does not say which profile
    kAacFrequency,    // AAC without configuration at a rate that has no index
    kAacProfile,      // AAC without configuration in a profile that none can be made for
    kNoParameterSets  // H.264 in a bitmap-header track without parameter sets in its first frames
};

struct DroppedTrack {
    uint64_t mTrackNumber;
    uint64_t mPosition;  // of the TrackEntry in the file
    DropReason mReason;
};

struct DiscoveredTrack {
    DropReason mDrop = DropReason::kNone;
    sp<MetaData> mMeta;     // null when dropped
    int64_t mExtraPos = 0;  // block whose first mExtraSize bytes became the codec configuration; 0: none
    uint32_t mExtraSize = 0;
    bool mCountsAsSubtitle = false;  // dropped, as a subtitle track that came through the codec tables
};

DiscoveredTrack DiscoverTrack(MatroskaExtReader::CMatroskaFile* file,
                              const MatroskaExtReader::TrackEntry& entry);

// The Segment's duration in microseconds, rounded.
int64_t DurationUs(const MatroskaExtReader::CMatroskaFile& file);

}  // namespace android
