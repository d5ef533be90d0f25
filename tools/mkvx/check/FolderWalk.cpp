#include "check/FolderWalk.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "base/Interrupt.h"

namespace mkvx {
namespace {

namespace fs = std::filesystem;

bool hasMatroskaName(const fs::path& path) {
    static const char* const extensions[] = {".mkv", ".mka", ".mks", ".mk3d", ".webm"};
    std::string extension = path.extension().string();
    for (char& c : extension)
        if (c >= 'A' && c <= 'Z') c = char(c - 'A' + 'a');
    return std::any_of(std::begin(extensions), std::end(extensions),
                       [&](const char* known) { return extension == known; });
}

bool beginsAsEbml(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    char magic[4] = {};
    return file.read(magic, sizeof magic) && std::memcmp(magic, "\x1A\x45\xDF\xA3", sizeof magic) == 0;
}

uint64_t sizeOf(const fs::path& path) {
    std::error_code error;
    const uintmax_t size = fs::file_size(path, error);
    return error ? 0 : uint64_t(size);
}

void addFolder(const fs::path& folder, std::vector<FoundFile>& found) {
    std::error_code error;
    const size_t first = found.size();
    for (fs::recursive_directory_iterator at(folder, fs::directory_options::skip_permission_denied, error),
         end;
         !error && at != end && !wasInterrupted(); at.increment(error)) {
        std::error_code ignored;
        if (!at->is_regular_file(ignored)) continue;  // a pipe would make its reader wait
        if (hasMatroskaName(at->path()) || beginsAsEbml(at->path()))
            found.push_back({at->path().string(), sizeOf(at->path())});
    }
    std::sort(found.begin() + std::ptrdiff_t(first), found.end(),
              [](const FoundFile& a, const FoundFile& b) { return a.path < b.path; });
}

}  // namespace

std::vector<FoundFile> findFiles(const std::vector<std::string>& paths) {
    std::vector<FoundFile> found;
    for (const std::string& path : paths) {
        std::error_code error;
        if (fs::is_directory(path, error))
            addFolder(path, found);
        else
            found.push_back({path, sizeOf(path)});
    }
    return found;
}

}  // namespace mkvx
