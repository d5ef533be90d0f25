// Which frames a laced block is made of (RFC 9559, section 10.3), for those who get them as one unit.
#pragma once
#include <media/stagefright/DataSource.h>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace mkvx {

// The sizes of the frames, in their order, of the block whose payload begins at `position` and whose unit has
// `size` bytes. Together they are `size`. Nothing where the bytes cannot be read or do not fit. Holds for
// frames that are stored as they are delivered, without a content encoding.
std::optional<std::vector<uint64_t>> laceSizes(android::DataSource& source, uint64_t position, size_t size);

}  // namespace mkvx
