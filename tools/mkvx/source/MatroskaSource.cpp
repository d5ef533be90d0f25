#include "source/MatroskaSource.h"

#include <cstdint>
#include <cstring>

#include "base/Failure.h"
#include "source/OpenSource.h"
#include "source/WindowSource.h"

namespace mkvx {
namespace {

// Walking a tree reads two bytes here and three there; what lies between is often the next header.
constexpr size_t kWindowSize = 4 * 1024;

}  // namespace

android::sp<android::DataSource> openMatroska(const std::string& path, const SourceOptions& options) {
    static constexpr uint8_t kMagic[] = {0x1A, 0x45, 0xDF, 0xA3};
    const android::sp<android::DataSource> source = openSource(path, options);
    uint8_t bytes[sizeof kMagic];
    const bool isRead = source->readAt(0, bytes, sizeof bytes) == ssize_t(sizeof bytes);
    if (!isRead || std::memcmp(bytes, kMagic, sizeof bytes) != 0)
        throw FileFailure(path, "is no Matroska or WebM file (it does not begin with 1A 45 DF A3)");
    return new WindowSource(source, kWindowSize);
}

}  // namespace mkvx
