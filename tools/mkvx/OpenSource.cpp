#include "OpenSource.h"

#include <strings.h>
#include <cstring>

#include "HttpSource.h"
#include "Interrupt.h"
#include "Source.h"
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
