// A TrackEntry as the file has it, with the facts that the plug-in's decisions rest on. Values that the file
// does not hold are those that the plug-in takes in their place. Plain values.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "device/CodecRecords.h"

namespace mkvx {

// TrackType, RFC 9559, section 5.1.4.1.3.
constexpr uint64_t kVideoType = 1, kAudioType = 2, kSubtitleType = 17;

// Why the plug-in does not offer a track.
enum class DropReason {
    kSubtitleKind,    // subtitles that no MIME type is known for
    kUnmappedCodec,   // the codec tag maps to no MIME type
    kTrackType,       // neither video, audio nor subtitle
    kAacNoProfile,    // AAC without configuration, and the codec ID does not say which profile
    kAacFrequency,    // AAC without configuration at a rate that has no index
    kAacProfile,      // AAC without configuration in a profile that none can be made for
    kNoParameterSets  // H.264 in a bitmap-header track without parameter sets in its first frames
};

// One ContentEncoding.
struct FrameEncoding {
    bool coversFrames = false, coversPrivate = false;
    bool isEncryption = false;
    bool isUndone = false;           // on frames; else they arrive as stored
    bool isHeaderStripping = false;  // behind which no further encoding is undone
    uint64_t algorithm = 0;          // ContentCompAlgo
};

struct FileTrack {
    enum class TagOrigin { kNothing, kCodecId, kCodecPrivate };

    uint64_t number = 0;  // TrackNumber
    uint64_t type = 0;    // TrackType
    std::string codecId;  // up to its first zero byte
    Bytes codecPrivate;
    uint64_t position = 0;  // of the TrackEntry
    bool hasName = false;
    bool isFound = false;                  // blocks with its number are read as this entry's
    bool deliversLacesApart = false;       // else a block's frames arrive as one unit
    std::vector<FrameEncoding> encodings;  // ascending by their order
    uint32_t tag = 0;  // four characters, the first in the lowest byte, or a wave format tag; 0: none
    TagOrigin tagFrom = TagOrigin::kNothing;
    uint32_t missesRecordOf = 0;  // bytes that the codec's record takes, where CodecPrivate has fewer; else 0
    uint64_t pixelWidth = 0, pixelHeight = 0;
    bool hasAudioFormat = false;   // an Audio element
    double samplingFrequency = 0;  // Hz
    uint64_t bitsPerSample = 0;
    double timeScale = 1;  // TrackTimestampScale
};

}  // namespace mkvx
