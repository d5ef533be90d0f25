// Streams of start codes 00 00 01, and the bytes between them.
#pragma once
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace mkvx {

using Bytes = std::vector<uint8_t>;

// The first byte behind the next start code at or after `from`; `size` where there is none.
inline size_t behindStartCode(const uint8_t* data, size_t size, size_t from) {
    for (size_t at = from; at + 3 <= size; ++at)
        if (data[at] == 0 && data[at + 1] == 0 && data[at + 2] == 1) return at + 3;
    return size;
}

// Calls take(data, size) for what follows each start code, up to the next or the end, until it answers true.
template <typename Take>
void eachCoded(const uint8_t* data, size_t size, Take take) {
    for (size_t at = behindStartCode(data, size, 0); at < size;) {  // bounded: every step moves forward
        const size_t next = behindStartCode(data, size, at);
        if (take(data + at, (next < size ? next - 3 : size) - at)) return;
        at = next;
    }
}

// The bytes of a NAL unit without those that keep start codes out of it (ITU-T H.264, 7.4.1.1), the first
// `most` of them.
inline Bytes unescaped(const uint8_t* data, size_t size, size_t most) {
    Bytes out;
    size_t zeros = 0;
    for (size_t i = 0; i < size && out.size() < most; ++i) {
        if (zeros >= 2 && data[i] == 3) {
            zeros = 0;
            continue;
        }
        zeros = data[i] == 0 ? zeros + 1 : 0;
        out.push_back(data[i]);
    }
    return out;
}

}  // namespace mkvx
