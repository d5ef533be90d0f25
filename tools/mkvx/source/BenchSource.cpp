#include "source/BenchSource.h"

#include <host/MappedSource.h>
#include <host/PreadSource.h>
#include <algorithm>
#include <cstring>

#include "base/Failure.h"
#include "source/FileBytes.h"
#include "source/WindowSource.h"

namespace mkvx {
namespace {

using android::DataSource;
using android::sp;

constexpr size_t kWindowSize = 64 * 1024;

// So that the first measured pass meets no page fault of the mapping, and its pages count before the
// measurement.
void touchPages(const android::host::MappedSource& source, off64_t size) {
    volatile uint8_t sum = 0;
    for (off64_t at = 0; at < size; at += 4096) sum = uint8_t(sum + source.bytes()[at]);
}

sp<DataSource> openMapped(const std::string& path) {
    sp<android::host::MappedSource> source = new android::host::MappedSource(path.c_str());
    off64_t size = 0;
    if (source->initCheck() == android::OK && source->getSize(&size) == android::OK)
        touchPages(*source, size);
    return source;
}

}  // namespace

sp<DataSource> openBenchSource(const std::string& kind, const std::string& path) {
    requireFile(path);
    sp<DataSource> source;
    if (kind == "mem")
        source = openMapped(path);
    else
        source = new android::host::PreadSource(path.c_str());
    if (kind == "window") source = new WindowSource(source, kWindowSize);
    const android::status_t status = source->initCheck();
    if (status != android::OK) throw FileFailure(path, std::strerror(-status));
    return source;
}

ssize_t CountingSource::readAt(off64_t offset, void* data, size_t size) {
    const ssize_t n = mSource->readAt(offset, data, size);
    ++mReads;
    if (n > 0) mBytes += uint64_t(n);
    if (mObserver) mObserver(offset, size, n);
    return n;
}

}  // namespace mkvx
