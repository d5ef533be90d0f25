#include "check/FolderWalk.h"

#include <sys/stat.h>
#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <utility>

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

class FolderWalk {
  public:
    explicit FolderWalk(bool follows) : mFollows(follows) {}

    void add(const std::string& path) {
        std::error_code error;
        if (!fs::is_directory(path, error)) return mFound.files.push_back({path, sizeOf(path), ""});
        const auto first = std::ptrdiff_t(mFound.files.size());
        for (mWaiting.push_back(path); !mWaiting.empty() && !wasInterrupted(); enterNext()) {
        }
        std::sort(mFound.files.begin() + first, mFound.files.end(),
                  [](const FoundFile& a, const FoundFile& b) { return a.path < b.path; });
    }

    FoundFiles take() { return std::move(mFound); }

  private:
    // Links wait until all is known that lies below without them.
    void enterNext() {
        const fs::path folder = mWaiting.back();
        mWaiting.pop_back();
        if (isNew(folder)) enter(folder);
        if (!mWaiting.empty() || mLinks.empty()) return;
        mWaiting.push_back(*mLinks.begin());
        mLinks.erase(mLinks.begin());
    }

    // Without links no folder is met twice, unless it was named twice.
    bool isNew(const fs::path& folder) {
        struct stat facts {};
        if (!mFollows || ::stat(folder.c_str(), &facts) != 0) return true;
        return mEntered.insert({uint64_t(facts.st_dev), uint64_t(facts.st_ino)}).second;
    }

    void enter(const fs::path& folder) {
        std::error_code error;
        fs::directory_iterator at(folder, error);
        if (error) return addProblem(folder, "the folder cannot be entered: " + error.message());
        for (; at != fs::directory_iterator() && !wasInterrupted(); at.increment(error)) look(*at);
        if (error) addProblem(folder, "the folder cannot be read to its end: " + error.message());
    }

    void look(const fs::directory_entry& entry) {
        std::error_code error;
        if (entry.is_symlink(error)) return lookAtLink(entry.path());
        if (entry.is_directory(error)) return mWaiting.push_back(entry.path());
        if (entry.is_regular_file(error)) addFile(entry.path());  // a pipe would make its reader wait
    }

    void lookAtLink(const fs::path& link) {
        std::error_code error;
        const fs::file_status target = fs::status(link, error);
        if (!fs::exists(target)) return lookAtLost(link, error);
        if (fs::is_regular_file(target)) return addFile(link);
        if (!fs::is_directory(target)) return;
        if (mFollows)
            mLinks.insert(link);
        else
            mFound.passedOver.push_back(link.string() +
                                        ": is a link to a folder, and passed over (--follow follows it)");
    }

    void lookAtLost(const fs::path& link, const std::error_code& error) {
        std::error_code ignored;
        const std::string why = error ? error.message() : std::string("there is nothing");
        const std::string problem =
            "is a link that leads nowhere: " + fs::read_symlink(link, ignored).string() + ": " + why;
        if (hasMatroskaName(link)) return addProblem(link, problem);
        mFound.passedOver.push_back(link.string() + ": " + problem);
    }

    void addFile(const fs::path& path) {
        if (hasMatroskaName(path) || beginsAsEbml(path))
            mFound.files.push_back({path.string(), sizeOf(path), ""});
    }

    void addProblem(const fs::path& path, const std::string& problem) {
        mFound.files.push_back({path.string(), 0, problem});
    }

    const bool mFollows;
    FoundFiles mFound;
    std::vector<fs::path> mWaiting;                    // folders
    std::set<fs::path> mLinks;                         // to folders
    std::set<std::pair<uint64_t, uint64_t>> mEntered;  // device and inode
};

}  // namespace

FoundFiles findFiles(const std::vector<std::string>& paths, bool follows) {
    FolderWalk walk(follows);
    for (const std::string& path : paths) walk.add(path);
    return walk.take();
}

}  // namespace mkvx
