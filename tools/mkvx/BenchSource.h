// The three byte sources that the benchmark reads through, one virtual readAt per read in all of them. Flags
// are 0.
#pragma once
#include <media/stagefright/DataSource.h>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace mkvx {

// "mem": the file mapped and touched beforehand; "pread": one system call per read; "window": pread behind
// one read-ahead window of 64 KiB. Throws FileFailure.
android::sp<android::DataSource> openBenchSource(const std::string& kind, const std::string& path);

// Hands every request on and counts it. Not for timing.
class CountingSource : public android::DataSource {
  public:
    explicit CountingSource(const android::sp<android::DataSource>& source) : mSource(source) {}

    android::status_t initCheck() const override { return mSource->initCheck(); }
    ssize_t readAt(off64_t offset, void* data, size_t size) override;
    android::status_t getSize(off64_t* size) override { return mSource->getSize(size); }
    uint32_t flags() override { return mSource->flags(); }

    uint64_t reads() const { return mReads; }
    uint64_t bytes() const { return mBytes; }

  private:
    android::sp<android::DataSource> mSource;
    uint64_t mReads = 0, mBytes = 0;
};

}  // namespace mkvx
