// The result of decoding, track by track. Plain values.
#pragma once
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "base/Format.h"
#include "device/Model.h"

namespace mkvx {

struct DecodedTrack {
    size_t index = 0;
    TrackKind kind = TrackKind::kVideo;
    std::string mime;
    std::string decoder;   // libavcodec's name of it, or the AAC library; empty when none could be opened
    size_t units = 0;      // fed
    size_t frames = 0;     // pictures, or blocks of samples
    uint64_t samples = 0;  // per channel; 0 for video
    size_t errors = 0;     // units with which something was wrong
    std::string sha1;      // FrameHash over all frames; empty when there is no decoder
    std::string problem;   // what was wrong first, or why there is no decoder; empty when all is well
};

struct DecodedFile {
    std::vector<DecodedTrack> tracks;
};

void printText(const DecodedFile& decoded, std::FILE* out);
void printJson(const DecodedFile& decoded, std::FILE* out);

}  // namespace mkvx
