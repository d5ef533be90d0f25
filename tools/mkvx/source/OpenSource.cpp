#include "source/OpenSource.h"

#include <strings.h>
#include <cstring>

#include "base/Interrupt.h"
#include "source/CachedSource.h"
#include "source/Faults.h"
#include "source/FileBytes.h"
#include "source/HttpSource.h"
#include "source/Spool.h"

namespace mkvx {
namespace {

bool beginsWith(const std::string& text, const char* prefix) {
    return ::strncasecmp(text.c_str(), prefix, std::strlen(prefix)) == 0;
}

android::sp<android::DataSource> openLocal(const std::string& path) {
    return isStandardInput(path) ? spooledInput().source() : openFile(path);
}

}  // namespace

bool isUrl(const std::string& path) {
    return beginsWith(path, "http://") || beginsWith(path, "https://");
}

bool isStandardInput(const std::string& path) {
    return path == "-";
}

android::sp<android::DataSource> openBytes(const std::string& path, const SourceOptions& options) {
    return interruptible(isUrl(path) ? openUrl(path, options.url, options.troubles) : openLocal(path));
}

android::sp<android::DataSource> openCached(const std::string& path, const SourceOptions& options) {
    return isUrl(path) ? openBytes(path, options) : interruptible(new CachedSource(openLocal(path)));
}

android::sp<android::DataSource> withFaults(const android::sp<android::DataSource>& source,
                                            const FaultOptions& faults) {
    if (!faults.any()) return source;
    return new FaultySource(source, faults, {});
}

android::sp<android::DataSource> openSource(const std::string& path, const SourceOptions& options) {
    return withFaults(openBytes(path, options), options.faults);
}

}  // namespace mkvx
