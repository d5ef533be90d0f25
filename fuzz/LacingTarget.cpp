// Lacing headers: frames that fit lie in their block, and what the test support's writer makes comes back.
//
// Front, 8 bytes: the lacing (modulo 3); where the block begins in a file (16 bits); how far its end lies
// from there (16 bits, little-endian); how many bytes the file has behind what was given; two bytes that
// choose frame sizes.
#include <algorithm>
#include <vector>

#include "FuzzTarget.h"
#include "matroska/reader/Lacing.h"

namespace fuzz {

namespace {

namespace reader = MatroskaExtReader;

constexpr size_t kFrontSize = 8;

// The bytes behind a position in a file.
struct Stretch {
    const Bytes& bytes;
    uint64_t begin, fileEnd;
    size_t at = 0;

    bool Take(uint8_t* out, unsigned n) {
        if (n > bytes.size() - at) return false;
        std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), n, out);
        at += n;
        return true;
    }
    uint64_t Position() const { return begin + at; }
    uint64_t LeftInFile() const { return fileEnd > Position() ? fileEnd - Position() : 0; }
};

struct Decoded {
    bool isWhole = false;
    std::vector<uint64_t> sizes;
    uint64_t framesPosition = 0;
};

Decoded Decode(uint32_t lacing, uint64_t end, Stretch bytes) {
    Decoded decoded;
    const reader::LacingResult result =
        reader::DecodeLacing(lacing, end, bytes, [&](uint64_t size) { decoded.sizes.push_back(size); });
    decoded.isWhole = result.isWhole;
    decoded.framesPosition = result.framesPosition;
    return decoded;
}

void CheckFrames(uint32_t lacing, uint64_t end, const Stretch& bytes) {
    const Decoded decoded = Decode(lacing, end, bytes);
    if (!decoded.isWhole) return;
    Require(decoded.framesPosition > bytes.begin && decoded.framesPosition <= end,
            "frames begin behind the sizes, in their block");
    uint64_t left = end - decoded.framesPosition;
    for (const uint64_t size : decoded.sizes) {
        Require(size <= left, "frames that fit lie within their block");
        left -= size;
    }
    Require(decoded.sizes.size() <= 257, "a block has 257 frames at the most");
    Require(lacing == reader::kLacingFixed || left == 0, "the last frame reaches to the block's end");
}

// What a writer laces is found again.
void CheckRoundTrip(uint32_t lacing, const Bytes& bytes, uint8_t countSeed, uint8_t sizeSeed) {
    std::vector<Bytes> frames;
    size_t at = 0;
    const size_t count = 1 + countSeed % 20;
    for (size_t i = 0; i < count; ++i) {
        const bool isLast = i + 1 == count;
        size_t size = isLast ? bytes.size() - at : (sizeSeed * (i * 37 + 1)) % 700;
        if (lacing == reader::kLacingFixed) size = bytes.size() / count;
        size = std::min(size, bytes.size() - at);
        frames.emplace_back(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                            bytes.begin() + static_cast<std::ptrdiff_t>(at + size));
        at += size;
    }
    if (lacing == reader::kLacingEbml && count == 1) return;  // a count of 0 means something else there
    const Bytes block = testing_support::Laced(static_cast<testing_support::Lacing>(lacing), frames);
    const Decoded decoded = Decode(lacing, block.size(), Stretch{block, 0, block.size()});
    Require(decoded.isWhole && decoded.sizes.size() == frames.size(), "a written block has its frames");
    for (size_t i = 0; i < frames.size(); ++i)
        Require(decoded.sizes[i] == frames[i].size(), "a written frame's size");
}

}  // namespace

void RunLacing(const uint8_t* data, size_t size) {
    if (size < kFrontSize) return;
    const Bytes bytes(data + kFrontSize, data + size);
    const uint32_t lacing = 1 + data[0] % 3u;
    const uint64_t begin = data[1] | uint64_t{data[2]} << 8;
    const uint64_t end = begin + (data[3] | uint64_t{data[4]} << 8);
    CheckFrames(lacing, end, Stretch{bytes, begin, begin + bytes.size() + data[5]});
    CheckRoundTrip(lacing, bytes, data[6], data[7]);
}

}  // namespace fuzz
