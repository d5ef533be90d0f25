#include "Source.h"

#include <host/PreadSource.h>
#include <cstring>

#include "Failure.h"

namespace mkvx {

android::sp<android::DataSource> openFile(const std::string& path) {
    android::sp<android::DataSource> source = new android::host::PreadSource(path.c_str());
    const android::status_t status = source->initCheck();
    if (status != android::OK) throw FileFailure(path, std::strerror(-status));
    return source;
}

}  // namespace mkvx
