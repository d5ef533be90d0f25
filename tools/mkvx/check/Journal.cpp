#include "check/Journal.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#include <cerrno>
#include <cstring>
#include <unordered_map>
#include <unordered_set>

#include "base/Failure.h"
#include "check/FileStamp.h"
#include "check/Json.h"
#include "check/Results.h"

namespace mkvx {
namespace {

bool isSame(const CheckedFile& checked, const std::optional<FileStamp>& now) {
    return now && checked.mtimeUs && *checked.mtimeUs == now->mtimeUs && checked.size == now->size;
}

}  // namespace

Journal::Journal(std::string path) : mPath(std::move(path)) {
    mFile = ::open(mPath.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    if (mFile < 0) throw FileFailure(mPath, std::strerror(errno));
    if (::flock(mFile, LOCK_EX | LOCK_NB) != 0) throw FileFailure(mPath, "another run is writing to it");
    const uint64_t whole = readResults(mPath, [](const CheckedFile&) {});
    if (::ftruncate(mFile, off_t(whole)) != 0) throw FileFailure(mPath, std::strerror(errno));
}

Journal::~Journal() {
    if (mFile >= 0) ::close(mFile);
}

std::vector<FoundFile> Journal::unknownOf(const std::vector<FoundFile>& files,
                                          const std::function<void(const CheckedFile&)>& onKnown) const {
    std::unordered_map<std::string, std::optional<FileStamp>> asked;
    for (const FoundFile& file : files) asked.emplace(file.path, stampOf(file.path));
    std::unordered_map<std::string, CheckedFile> known;  // the last result of each
    readResults(mPath, [&](CheckedFile checked) {
        const auto found = asked.find(checked.path);
        if (found == asked.end()) return;
        if (isSame(checked, found->second))
            known.insert_or_assign(checked.path, std::move(checked));
        else
            known.erase(checked.path);
    });
    for (const auto& [path, checked] : known) onKnown(checked);
    std::vector<FoundFile> unknown;
    for (const FoundFile& file : files)
        if (known.count(file.path) == 0) unknown.push_back(file);
    return unknown;
}

void Journal::append(const CheckedFile& checked) {
    const std::string line = toJsonLine(checked) + "\n";
    for (size_t done = 0; done < line.size();) {
        const ssize_t put = ::write(mFile, line.data() + done, line.size() - done);
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) throw FileFailure(mPath, std::string("cannot be written: ") + std::strerror(errno));
        done += size_t(put);
    }
}

}  // namespace mkvx
