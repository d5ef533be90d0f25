#include "BenchSource.h"

#include <host/MappedSource.h>
#include <host/PreadSource.h>
#include <algorithm>
#include <cstring>

#include "Failure.h"
#include "Source.h"

namespace mkvx {
namespace {

using android::DataSource;
using android::sp;

// Keeps the last window that was read. A request that needs a whole window or more goes straight to the file.
// One thread.
class WindowSource : public DataSource {
  public:
    explicit WindowSource(const sp<DataSource>& file) : mFile(file), mWindow(kWindowSize) {}

    android::status_t initCheck() const override { return mFile->initCheck(); }
    android::status_t getSize(off64_t* size) override { return mFile->getSize(size); }

    ssize_t readAt(off64_t offset, void* data, size_t size) override {
        auto* out = static_cast<uint8_t*>(data);
        size_t done = 0;
        while (done < size) {
            const ssize_t n = readSome(offset + off64_t(done), out + done, size - done);
            if (n < 0 && done == 0) return n;
            if (n <= 0) break;
            done += size_t(n);
        }
        return ssize_t(done);
    }

  private:
    static constexpr size_t kWindowSize = 64 * 1024;

    ssize_t readSome(off64_t offset, uint8_t* out, size_t size) {
        const bool inside = offset >= mStart && offset < mStart + off64_t(mLength);
        if (!inside && size >= kWindowSize) return mFile->readAt(offset, out, size);
        if (!inside) {
            const ssize_t n = mFile->readAt(offset, mWindow.data(), kWindowSize);
            mStart = offset;
            mLength = n > 0 ? size_t(n) : 0;
            if (n <= 0) return n;
        }
        const size_t from = size_t(offset - mStart);
        const size_t n = std::min(size, mLength - from);
        std::memcpy(out, mWindow.data() + from, n);
        return ssize_t(n);
    }

    sp<DataSource> mFile;
    std::vector<uint8_t> mWindow;
    off64_t mStart = 0;
    size_t mLength = 0;
};

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
    if (kind == "window") source = new WindowSource(source);
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
