// The work that the benchmark repeats, on this program's own copy of the reader, so that tracks which the
// plug-in does not offer count too. No lock is taken and no frame is rewritten: the units are the file's own
// bytes, which makes them comparable with any other reader's.
//
// Each function does its work once and returns the milliseconds it took, negative when it failed.
#pragma once
#include <media/stagefright/DataSource.h>
#include <cstdint>
#include <vector>

namespace mkvx {

struct Tally {
    uint64_t units = 0, bytes = 0, keys = 0;
    uint64_t timeSumUs = 0;  // wrapping
    uint32_t crc = 0;        // CRC-32 of all payloads joined, when asked for
};

// In the order of the file's TrackEntries.
using Tallies = std::vector<Tally>;

struct SinkOptions {
    bool crc = false;
};

// Open until the index is ready, and close.
double benchOpen(const android::sp<android::DataSource>& source);

// Open, pull every unit of every TrackEntry in the order of time (the next one comes from the track that is
// furthest behind), look at its ends, time and key flag, release it, and close.
double benchDemux(const android::sp<android::DataSource>& source, SinkOptions options, Tallies& tallies);

// Opened beforehand: `count` seeks, each with one unit of the first video track, or of the first track if
// there is no video.
double benchSeek(const android::sp<android::DataSource>& source, size_t count, SinkOptions options,
                 Tallies& tallies);

}  // namespace mkvx
