// What a file may make the reader keep. Everything beyond a limit is dropped with a reason (Losses.h); no
// limit can be met by a file that a muxer would write.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace MatroskaExtReader {

namespace limit {

constexpr uint32_t kTrackEntries = 1024;
constexpr uint32_t kSeekEntries = 16384;
constexpr uint32_t kFollowedSeekHeads = 256;
constexpr uint32_t kCuePoints = 2u << 20;
constexpr uint32_t kCuePositions = 2u << 20;
constexpr uint32_t kChapterObjects = 32768;
constexpr uint32_t kChapterDepth = 64;
constexpr uint32_t kAttachedFiles = 16384;
constexpr uint32_t kTimeSlices = 256;  // in one BlockGroup
constexpr uint32_t kContentEncodings = 1024;
constexpr uint32_t kClusterObjects = 65536;  // blocks kept by a full parse, which opening never asks for

// Payload bytes of strings and binaries that the model keeps: elements that reach past their parent overlap,
// so their sum can exceed the file.
constexpr uint64_t kKeptBytes = 128u << 20;
constexpr uint64_t kStringBytes = 16u << 20;

// Beyond this many bytes a declared size is believed only after the payload's last byte could be read.
constexpr uint64_t kUnprobedBytes = 1u << 20;

constexpr uint32_t kInflatedFrameBytes = 64u << 20;
constexpr uint32_t kRestoredBlockBytes = 256u
                                         << 20;  // inflated or header-restored frames of one block together

}  // namespace limit

}  // namespace MatroskaExtReader
