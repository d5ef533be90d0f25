#include "MatroskaSource.h"

#include <cstdint>
#include <cstring>

#include "Failure.h"
#include "Source.h"

namespace mkvx {

android::sp<android::DataSource> openMatroska(const std::string& path) {
    static constexpr uint8_t kMagic[] = {0x1A, 0x45, 0xDF, 0xA3};
    const android::sp<android::DataSource> source = openFile(path);
    uint8_t bytes[sizeof kMagic];
    const bool isRead = source->readAt(0, bytes, sizeof bytes) == ssize_t(sizeof bytes);
    if (!isRead || std::memcmp(bytes, kMagic, sizeof bytes) != 0)
        throw FileFailure(path, "is no Matroska or WebM file (it does not begin with 1A 45 DF A3)");
    return source;
}

}  // namespace mkvx
