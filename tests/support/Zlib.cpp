#include <zlib.h>

#include "support/EbmlWriter.h"

namespace testing_support {

Bytes Zlib(const Bytes& plain, int level) {
    uLongf size = compressBound(static_cast<uLong>(plain.size()));
    Bytes packed(size);
    (void)compress2(packed.data(), &size, plain.data(), static_cast<uLong>(plain.size()), level);
    packed.resize(size);
    return packed;
}

}  // namespace testing_support
