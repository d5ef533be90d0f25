// What an element's bytes say, read with the reader's own value types.
#pragma once
#include <cstdint>
#include <optional>

#include "elements/Model.h"
#include "matroska/reader/MatroskaReader.h"

namespace mkvx {

// What a value needs of its surroundings to be told as time or place.
struct ValueContext {
    uint64_t scale = 1000000;             // nanoseconds a timecode unit
    uint64_t segmentData = 0;             // file offset that positions count from
    std::optional<uint64_t> clusterTime;  // timecode units
};

// Fills value, meaning and, where the plug-in would make nothing of it, notes. Reads at most a few hundred
// bytes and a block's lacing header; moves the file's position.
void readElementValue(MatroskaExtReader::CMatroskaNode* node, const ValueContext& context, Element& element);

}  // namespace mkvx
