// The element that decided: where it stands in the file, and how it begins. For people who want to see it.
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace mkvx {

struct Evidence {
    static constexpr size_t kMostBytes = 32;

    std::string element;         // its name; empty where the bytes are no element
    uint64_t offset = 0;         // of the element's header
    uint64_t dataOffset = 0;     // of its payload, where the bytes are
    uint64_t size = 0;           // of its payload
    std::vector<uint8_t> bytes;  // of its payload, the first kMostBytes at most
};

}  // namespace mkvx
