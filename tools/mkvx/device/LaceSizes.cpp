#include "device/LaceSizes.h"

#include <limits>

#include "matroska/reader/Lacing.h"

namespace mkvx {
namespace {

// What the decoding of a lacing header reads from.
class SourceBytes {
  public:
    SourceBytes(android::DataSource& source, uint64_t at) : mSource(source), mAt(at) {}

    bool Take(uint8_t* out, size_t count) {
        const bool isThere = mSource.readAt(off64_t(mAt), out, count) == ssize_t(count);
        mAt += count;
        return isThere;
    }
    uint64_t Position() const { return mAt; }
    uint64_t LeftInFile() const { return std::numeric_limits<uint64_t>::max() - mAt; }

  private:
    android::DataSource& mSource;
    uint64_t mAt;
};

// Where the frames begin; nothing for a header that cannot be read.
std::optional<uint64_t> framesPosition(android::DataSource& source, uint32_t lacing, uint64_t position) {
    constexpr uint64_t kAnywhere = uint64_t(std::numeric_limits<int64_t>::max());
    SourceBytes bytes(source, position);
    uint64_t ignored = 0;
    const bool isRead = MatroskaExtReader::PassLacing(lacing, kAnywhere, bytes, &ignored);
    return isRead ? std::optional<uint64_t>(bytes.Position()) : std::nullopt;
}

}  // namespace

std::optional<std::vector<uint64_t>> laceSizes(android::DataSource& source, uint64_t position, size_t size) {
    uint8_t flags = 0;  // in front of the payload
    if (position == 0 || source.readAt(off64_t(position - 1), &flags, 1) != 1) return std::nullopt;
    const uint32_t lacing = flags >> 1 & 3;
    if (lacing == MatroskaExtReader::kLacingNone) return std::vector<uint64_t>{size};
    const std::optional<uint64_t> frames = framesPosition(source, lacing, position);
    if (!frames) return std::nullopt;
    SourceBytes bytes(source, position);
    std::vector<uint64_t> sizes;
    uint64_t sum = 0;
    const auto add = [&](uint64_t frame) {
        sizes.push_back(frame);
        sum = MatroskaExtReader::AddSaturating(sum, frame);
    };
    const bool isWhole = MatroskaExtReader::DecodeLacing(lacing, *frames + size, bytes, add).isWhole;
    return isWhole && sum == size ? std::optional(std::move(sizes)) : std::nullopt;
}

}  // namespace mkvx
