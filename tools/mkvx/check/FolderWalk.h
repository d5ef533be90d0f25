// Which files a list of paths means: a file is itself, a folder all Matroska files below it.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

namespace mkvx {

struct FoundFile {
    std::string path;
    uint64_t size = 0;  // 0 where it cannot be told
    std::string problem =
        {};  // of a folder or link behind which there is nothing to examine: why; else empty
};

struct FoundFiles {
    std::vector<FoundFile> files;
    std::vector<std::string> passedOver;  // a sentence for each link that does not matter to any of them
};

// Below a folder those count that are named .mkv, .mka, .mks, .mk3d or .webm, in any case, and those that
// begin as an EBML document does. What cannot be looked into is in the list with its problem: folders, and
// links of such a name that lead nowhere. Links to folders are followed only if `follows`; then each folder
// is gone through once, however many ways lead there. Each path's files in the order of their paths. A path
// that is no folder is taken as it is, whether it exists or not.
FoundFiles findFiles(const std::vector<std::string>& paths, bool follows);

}  // namespace mkvx
