// Where a file's Cues are, whether opening finds them or not: for telling "there are none" from "they are not
// found".
//
// Looks through the first Segment's children and SeekHeads, and where those lead to none, at the bytes around
// the place that a SeekHead names and within damage. Bounded: an element header each, and a fixed number of
// bytes looked through. Silent. One thread.
#pragma once
#include <media/stagefright/DataSource.h>
#include <cstdint>
#include <optional>

namespace mkvx {

struct CuesPlaces {
    struct Entry {
        uint64_t offset = 0;   // of the Seek element
        uint64_t leadsTo = 0;  // in the file, or behind it
    };
    std::optional<Entry> entry;     // the first one of a SeekHead that names Cues
    std::optional<uint64_t> found;  // the first Cues element
    bool hasPoints = false;         // in it: a CuePoint that names a track's place
};

CuesPlaces findCues(const android::sp<android::DataSource>& source);

}  // namespace mkvx
