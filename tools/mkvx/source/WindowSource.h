// A source in front of another one that keeps the last window that was read. A request that needs a whole
// window or more goes straight through. One thread.
#pragma once
#include <media/stagefright/DataSource.h>
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

namespace mkvx {

class WindowSource : public android::DataSource {
  public:
    WindowSource(const android::sp<android::DataSource>& file, size_t windowSize)
        : mFile(file), mWindow(windowSize) {}

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
    ssize_t readSome(off64_t offset, uint8_t* out, size_t size) {
        const bool inside = offset >= mStart && offset < mStart + off64_t(mLength);
        if (!inside && size >= mWindow.size()) return mFile->readAt(offset, out, size);
        if (!inside) {
            const ssize_t n = mFile->readAt(offset, mWindow.data(), mWindow.size());
            mStart = offset;
            mLength = n > 0 ? size_t(n) : 0;
            if (n <= 0) return n;
        }
        const size_t from = size_t(offset - mStart);
        const size_t n = std::min(size, mLength - from);
        std::memcpy(out, mWindow.data() + from, n);
        return ssize_t(n);
    }

    android::sp<android::DataSource> mFile;
    std::vector<uint8_t> mWindow;
    off64_t mStart = 0;
    size_t mLength = 0;
};

}  // namespace mkvx
