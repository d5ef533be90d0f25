#include "check/FileStamp.h"

#include <sys/stat.h>

namespace mkvx {

std::optional<FileStamp> stampOf(const std::string& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) return std::nullopt;
    return FileStamp{uint64_t(info.st_size),
                     int64_t(info.st_mtim.tv_sec) * 1000000 + info.st_mtim.tv_nsec / 1000};
}

}  // namespace mkvx
