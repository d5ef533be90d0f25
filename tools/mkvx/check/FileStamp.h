// What tells whether a file is still the one that was examined.
#pragma once
#include <cstdint>
#include <optional>
#include <string>

namespace mkvx {

struct FileStamp {
    uint64_t size = 0;
    int64_t mtimeUs = 0;  // microseconds since 1970, cut
};

// Nothing for what is no regular file: a URL, standard input, a file that is not there.
std::optional<FileStamp> stampOf(const std::string& path);

}  // namespace mkvx
