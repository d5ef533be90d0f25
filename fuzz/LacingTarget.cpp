// Lacing headers, against a second decoder and against what the test support's writer makes.
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

// The second decoder: a sum that does not fit 64 bits is remembered as such. False when a byte is
// missing.
class Second {
  public:
    Second(uint64_t end, Stretch bytes) : mEnd(end), mBytes(bytes) {}

    bool Run(uint32_t lacing) {
        uint8_t count;
        if (mBytes.Position() >= mEnd || !mBytes.Take(&count, 1)) return false;
        if (lacing == reader::kLacingFixed) return Fixed(count);
        if (!(lacing == reader::kLacingXiph ? Xiph(count) : Ebml(count))) return false;
        sizes.push_back(mEnd - (mBytes.Position() + (mIsHuge ? UINT64_MAX : mSum)));
        return mBytes.Position() <= mEnd && !mIsHuge && mSum <= mEnd - mBytes.Position();
    }

    std::vector<uint64_t> sizes;

  private:
    bool Fixed(uint8_t count) {
        const size_t frames = (count + 1u) % 256;
        if (mBytes.Position() > mEnd) return false;
        if (frames != 0) sizes.assign(frames, (mEnd - mBytes.Position()) / frames);
        return true;
    }
    bool Xiph(uint8_t count) {
        for (int i = 0; i < count; ++i) {
            uint64_t size = 0;
            uint8_t byte;
            do {
                if (mBytes.Position() >= mEnd || !mBytes.Take(&byte, 1)) return false;
                size += byte;
            } while (byte == 255);
            Add(size);
        }
        return true;
    }
    bool Ebml(uint8_t count) {
        uint64_t size = 0, stored, bias;
        if (!Stored(&stored, &bias)) return false;
        Add(size = stored);
        for (int i = 0; i < (count + 255) % 256; ++i) {
            if (!Stored(&stored, &bias)) return false;
            Add(size = size + stored - bias);
        }
        return true;
    }
    bool Stored(uint64_t* value, uint64_t* bias) {
        uint8_t first, next;
        if (!mBytes.Take(&first, 1) || first == 0) return false;
        unsigned extra = 0;
        while ((first & (0x80 >> extra)) == 0) ++extra;
        Stretch ahead = mBytes;  // either all bytes of a number are there, or none is taken
        *value = first & (0x7F >> extra);
        bool isUnknown = *value == (0x7Fu >> extra);
        for (unsigned i = 0; i < extra; ++i) {
            if (!ahead.Take(&next, 1)) return false;
            *value = *value << 8 | next;
            isUnknown = isUnknown && next == 0xFF;
        }
        mBytes.at = ahead.at;
        if (isUnknown) *value = mBytes.LeftInFile();
        *bias = (uint64_t{1} << (7 * extra + 6)) - 1;
        return true;
    }
    void Add(uint64_t size) {
        sizes.push_back(size);
        mSum += size;
        mIsHuge = mIsHuge || mSum < size;
    }

    const uint64_t mEnd;
    Stretch mBytes;
    uint64_t mSum = 0;
    bool mIsHuge = false;
};

void CheckAgainstSecond(uint32_t lacing, uint64_t end, const Stretch& bytes) {
    const Decoded decoded = Decode(lacing, end, bytes);
    Second second(end, bytes);
    const bool isWhole = second.Run(lacing);
    Require(decoded.isWhole == isWhole, "both decoders agree on whether the frames fit");
    if (!isWhole) return;
    Require(decoded.sizes == second.sizes, "both decoders find the same sizes");
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
    CheckAgainstSecond(lacing, end, Stretch{bytes, begin, begin + bytes.size() + data[5]});
    CheckRoundTrip(lacing, bytes, data[6], data[7]);
}

}  // namespace fuzz
