// Small sound files of one peculiarity each, to be damaged; and the pieces of which hostile files are made.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "properties/HostileSource.h"
#include "support/EbmlWriter.h"

namespace testing_support {

constexpr uint64_t kVideoType = 1, kAudioType = 2, kSubtitleType = 17;

struct Sample {
    std::string name;
    Document file;
    bool holdsAddresses = false;  // its units differ from run to run
};
// The small peculiar files that every test may use, except those that have to open, and some more.
const std::vector<Sample>& Samples();

Element Mpeg2Track(uint64_t number = 1, Elements others = {});
Element Mp3Track(uint64_t number = 2, Elements others = {});
Element TextTrack(uint64_t number, const std::string& codecId = "S_TEXT/UTF8");
Element Private(const Bytes& bytes);
// A bitmap header of 40 bytes with this compression code.
Bytes BitmapHeader(const std::string& compression);
Bytes Zlib(const Bytes& plain);

// EBML header, Info, one MPEG-2 track (`trackParts` in it), one Cluster with these blocks.
Document OneTrack(const Elements& blocks, Elements trackParts = {});

// The bytes of a tree without an EBML header.
Bytes Piece(const Elements& elements);
// EBML header and a Segment that lasts to the end of the source and begins with `children`.
Bytes OpenSegment(const Elements& children);

}  // namespace testing_support
