// Which files a list of paths means: a file is itself, a folder all Matroska files below it.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

namespace mkvx {

struct FoundFile {
    std::string path;
    uint64_t size = 0;  // 0 where it cannot be told
};

// Below a folder those count that are named .mkv, .mka, .mks, .mk3d or .webm, in any case, and those that
// begin as an EBML document does; links to folders are not followed, folders that cannot be opened are passed
// over. Each folder's files in the order of their paths. A path that is no folder is taken as it is, whether
// it exists or not.
std::vector<FoundFile> findFiles(const std::vector<std::string>& paths);

}  // namespace mkvx
