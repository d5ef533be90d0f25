#include "source/FileBytes.h"

#include <host/PreadSource.h>
#include <sys/stat.h>
#include <cerrno>
#include <cstring>

#include "base/Failure.h"

namespace mkvx {

void requireFile(const std::string& path) {
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0) {
        const bool isOther = errno == ENOENT && path.find("://") != std::string::npos;
        throw FileFailure(
            path, isOther ? "only http:// and https:// are read from a network" : std::strerror(errno));
    }
    if (S_ISDIR(status.st_mode))
        throw FileFailure(path, std::string(std::strerror(EISDIR)) + " (mkvx check takes folders)");
    // Opening a pipe that nobody writes to would wait for ever.
    if (!S_ISREG(status.st_mode) && !S_ISBLK(status.st_mode))
        throw FileFailure(path,
                          "Cannot be read at any offset, as a media file has to be (- reads standard input)");
}

android::sp<android::DataSource> openFile(const std::string& path) {
    requireFile(path);
    android::sp<android::DataSource> source = new android::host::PreadSource(path.c_str());
    const android::status_t status = source->initCheck();
    if (status != android::OK) throw FileFailure(path, std::strerror(-status));
    return source;
}

}  // namespace mkvx
