// What a file may make the reader keep. Everything beyond a limit is dropped with a reason (Losses.h); no
// limit can be met by a file that a muxer would write.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace MatroskaExtReader {

// What of a file is counted as it is kept.
enum class Kept {
    kSegment,
    kTrackEntry,
    kContentEncoding,
    kSeekHead,
    kSeekEntry,
    kCues,
    kCuePoint,
    kCuePosition,
    kCueReference,
    kChapterObject,
    kAttachedFile,
    kClusterObject
};

namespace limit {

constexpr uint32_t kTrackEntries = 1024;
constexpr uint32_t kCuePoints = 2u << 20;
constexpr uint32_t kSniffedElements = 64;  // top-level ones among which an EBML header is looked for
constexpr uint32_t kFollowedSeekHeads = 256;
constexpr uint32_t kChapterDepth = 64;
constexpr uint32_t kTimeSlices = 256;  // in one BlockGroup

// How many of each kind, in the order of Kept.
constexpr uint32_t kMostKept[] = {
    256,            // Segments
    kTrackEntries,  // TrackEntry
    1024,           // ContentEncoding, of all tracks
    4096,           // SeekHeads
    16384,          // entries of all SeekHeads
    4096,           // Cues
    kCuePoints,     // CuePoint; these three of all Cues of the file
    kCuePoints,     // CueTrackPositions
    kCuePoints,     // CueReference
    32768,          // editions, atoms and displays of chapters
    16384,          // AttachedFile
    65536,          // blocks kept by a full parse, which opening never asks for
};

// Payload bytes of strings and binaries that the model keeps: elements that reach past their parent overlap,
// so their sum can exceed the file.
constexpr uint64_t kKeptBytes = 32u << 20;
constexpr uint64_t kStringBytes = 16u << 20;

// What they may take together beyond the length of the file.
constexpr uint64_t kKeptBeyondLength = 1u << 20;

// What a frame may grow to when its encoding is undone, and all frames of one block together. While a file is
// being opened a block of few bytes that claims to hold very many is not looked into.
constexpr uint32_t kInflatedFrameBytes = 64u << 20;
constexpr uint32_t kRestoredBlockBytes = 256u << 20;
constexpr uint64_t kUnquestionedGrowth = 4u << 20;
constexpr uint64_t kMostGrowth = 16;  // times the block's own bytes, beyond kUnquestionedGrowth

constexpr uint32_t RestoredBytesWhileOpening(uint64_t blockBytes) {
    return blockBytes >= (kRestoredBlockBytes - kUnquestionedGrowth) / kMostGrowth
               ? kRestoredBlockBytes
               : static_cast<uint32_t>(kUnquestionedGrowth + kMostGrowth * blockBytes);
}

// Reads and blocks that one seek by the Cues goes through. A file whose Cues name ever other Clusters without
// a key frame would have it go through all of them for each point.
constexpr uint64_t kSeekWork = 2u << 20;

// A first frame in which a codec's configuration is looked for.
constexpr uint32_t kInspectedBytes = 32u << 20;

// What opening may ask of the source, measured by the bytes in front of the furthest one that the source has
// delivered. A sound file is opened for a fraction of this. What overlaps itself, or sends one track after
// the other through the whole file, runs out of it, and what was found until then is offered.
constexpr uint64_t kOpeningReads = 64, kOpeningReadsPerByte = 2;

// What of the bytes pieces (Pieces.h) may take for nothing; beyond it there are no more of them.
constexpr uint64_t kUnusedBytes = 8u << 10, kUnusedBytesPerByte = 4;
constexpr uint64_t kOpeningBytes = (1u << 20) - kUnusedBytes, kOpeningBytesPerByte = 16 - kUnusedBytesPerByte;

}  // namespace limit

}  // namespace MatroskaExtReader
