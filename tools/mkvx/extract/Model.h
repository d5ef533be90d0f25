// What became of an extraction. Plain values.
#pragma once
#include <cstdint>
#include <cstdio>
#include <string>

#include "base/Format.h"

namespace mkvx {

struct ExtractedTrack {
    std::string file;       // that was read
    size_t track = 0;       // TrackInfo::index
    std::string output;     // the file that was written
    std::string form;       // for people: "AAC in ADTS"
    size_t units = 0;       // written
    size_t unreadable = 0;  // left out
    uint64_t bytes = 0;     // of the output
};

void printText(const ExtractedTrack& extracted, std::FILE* out);
void printJson(const ExtractedTrack& extracted, std::FILE* out);

}  // namespace mkvx
