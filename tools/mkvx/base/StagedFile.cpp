#include "base/StagedFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "base/Failure.h"

namespace mkvx {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const std::string& path, int error) {
    throw FileFailure(path, error == EEXIST ? "is there already, and nothing is overwritten"
                                            : std::string("cannot be written: ") + std::strerror(error));
}

}  // namespace

StagedFile::StagedFile(const std::string& path) : mPath(path) {
    struct stat info {};
    if (::lstat(path.c_str(), &info) == 0) fail(path, EEXIST);
    std::error_code error;
    const fs::path place = fs::absolute(path, error);
    std::string made = (place.parent_path() / ".mkvx-XXXXXX").string();
    if (::mkdtemp(made.data()) == nullptr) fail(path, errno);
    mFolder = made;
}

StagedFile::~StagedFile() {
    std::error_code ignored;
    fs::remove_all(mFolder, ignored);
}

void StagedFile::clear() {
    std::error_code ignored;
    for (const fs::directory_entry& entry : fs::directory_iterator(mFolder, ignored))
        fs::remove_all(entry.path(), ignored);
}

void StagedFile::putInPlace() {
    if (::renameat2(AT_FDCWD, file().c_str(), AT_FDCWD, mPath.c_str(), RENAME_NOREPLACE) == 0) return;
    // Some file systems know no renaming that replaces nothing; none of those links a file over another one.
    if (errno != EINVAL || ::link(file().c_str(), mPath.c_str()) != 0) fail(mPath, errno);
}

}  // namespace mkvx
