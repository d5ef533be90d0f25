// How byte sources are opened and what is made to go wrong with them: options of every command.
#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace mkvx {

// What a source is made to do wrong. Reads are counted from 1; each view of a file has a count of its own
// (Session.h says where it starts).
struct FaultOptions {
    uint64_t shortEvery = 0;   // of the reads longer than one byte, each so-many-th gives half; 0: none
    uint64_t failAt = 0;       // this read answers ERROR_IO; 0: none
    bool failsFromOn = false;  // and so does every later one
    bool noSize = false;       // getSize() fails
    uint64_t lateUs = 0;       // what each read sleeps beforehand, microseconds

    bool any() const { return shortEvery != 0 || failAt != 0 || noSize || lateUs != 0; }
};

struct UrlOptions {
    uint32_t blockKib = 64;    // what is fetched and kept as one piece
    uint32_t cacheMib = 8;     // of such pieces
    uint32_t timeoutS = 15;    // to connect, and how long next to nothing may arrive
    uint32_t spoolMib = 4096;  // the most that is kept of a file whose server refuses ranges
};

// What went wrong with sources after they were open, when a reader only sees its reads fail: one sentence for
// each source, which names it. main() tells them in place of what the command made of it.
using SourceTroubles = std::vector<std::string>;

struct SourceOptions {
    FaultOptions faults;
    UrlOptions url;
    std::shared_ptr<SourceTroubles> troubles = std::make_shared<SourceTroubles>();
};

}  // namespace mkvx
