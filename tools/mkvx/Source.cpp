#include "Source.h"

#include <host/PreadSource.h>
#include <strings.h>
#include <sys/stat.h>
#include <cerrno>
#include <cstring>

#include "Failure.h"
#include "HttpSource.h"
#include "SourceFaults.h"
#include "Spool.h"

namespace mkvx {
namespace {

bool beginsWith(const std::string& text, const char* prefix) {
    return ::strncasecmp(text.c_str(), prefix, std::strlen(prefix)) == 0;
}

}  // namespace

bool isUrl(const std::string& path) {
    return beginsWith(path, "http://") || beginsWith(path, "https://");
}

bool isStandardInput(const std::string& path) {
    return path == "-";
}

void requireFile(const std::string& path) {
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0) {
        const bool isOther = errno == ENOENT && path.find("://") != std::string::npos;
        throw FileFailure(
            path, isOther ? "only http:// and https:// are read from a network" : std::strerror(errno));
    }
    if (S_ISDIR(status.st_mode)) throw FileFailure(path, std::strerror(EISDIR));
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

android::sp<android::DataSource> openBytes(const std::string& path, const SourceOptions& options) {
    if (isStandardInput(path)) return spooledInput().source();
    if (isUrl(path)) return openUrl(path, options.url, options.troubles);
    return openFile(path);
}

android::sp<android::DataSource> openSource(const std::string& path, const SourceOptions& options) {
    const android::sp<android::DataSource> bytes = openBytes(path, options);
    if (!options.faults.any()) return bytes;
    return new FaultySource(bytes, options.faults, {});
}

}  // namespace mkvx
