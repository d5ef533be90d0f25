// What a file's bytes are: a walk over all its elements, by the reader's own navigation.
#pragma once
#include <media/stagefright/DataSource.h>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <vector>

#include "check/Extras.h"
#include "device/Losses.h"

namespace mkvx {

// The blocks with one track number. Payload bytes are those behind the block's header.
struct BlockTally {
    uint64_t blocks = 0;
    uint64_t first = 0;                    // position of the first one's element
    uint64_t payload = 0;                  // of the blocks that can be read
    uint64_t refused = 0;                  // blocks that cannot
    std::optional<uint64_t> firstRefused;  // position of its element
    LossKind refusedFor{};                 // the first of them
    uint64_t laced = 0, laces = 0;         // blocks of several frames, and the frames in them
    std::optional<uint64_t> firstLaced;
    uint64_t wrapped = 0;  // blocks whose time does not fit and wraps
    std::optional<uint64_t> firstWrapped;
};

struct Damage {
    uint64_t position = 0, size = 0;
};

struct ByteAccount {
    static constexpr size_t kMostKept = 16;

    uint64_t metadata = 0, padding = 0, damaged = 0, unreachable = 0;
    uint64_t additions = 0;                 // payload beside the frames of blocks, which nobody reads
    std::map<uint64_t, BlockTally> blocks;  // by the number that a block names
    uint64_t clusters = 0;
    uint64_t segments = 0;
    std::vector<Damage> damages;  // what is between elements and is none, the first kMostKept
    uint64_t damageCount = 0;
    // Of the Segment, or of its last block, that goes on behind the file.
    struct Missing {
        uint64_t bytes = 0;     // behind the file's end, by its size
        uint64_t position = 0;  // of the element
    };
    std::optional<Missing> missing;
    Extras extras;
};

// Every byte is counted once: in a number above, or as the payload of blocks. Only the first Segment's
// elements count as reachable, as it is for the plug-in. Follows as many track numbers as a file may have
// entries; blocks with more of them count as unreachable.
// `onBytes`, where there is one, gets how many bytes more were counted.
ByteAccount accountBytes(const android::sp<android::DataSource>& source,
                         const std::function<void(uint64_t)>& onBytes);

}  // namespace mkvx
