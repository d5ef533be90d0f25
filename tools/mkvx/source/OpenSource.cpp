#include "source/OpenSource.h"

#include <strings.h>
#include <cstring>

#include "base/Interrupt.h"
#include "source/Faults.h"
#include "source/FileBytes.h"
#include "source/HttpSource.h"
#include "source/Spool.h"

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

android::sp<android::DataSource> openBytes(const std::string& path, const SourceOptions& options) {
    if (isStandardInput(path)) return interruptible(spooledInput().source());
    if (isUrl(path)) return interruptible(openUrl(path, options.url, options.troubles));
    return interruptible(openFile(path));
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
