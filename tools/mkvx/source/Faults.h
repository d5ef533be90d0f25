// A byte source made bad on purpose, to see on a good file what a bad network or disk does to it.
//
// It wraps any source and keeps its flags. What goes wrong depends on the count of reads alone, so that the
// same reads meet the same faults in every run. Reads may come from several threads.
#pragma once
#include <media/stagefright/DataSource.h>
#include <atomic>
#include <cstdint>

#include "source/Options.h"

namespace mkvx {

class FaultySource : public android::DataSource {
  public:
    // The counts start behind what another view has read, see Reads.
    struct Reads {
        uint64_t all = 0;
        uint64_t longer = 0;  // those of more than one byte
    };
    FaultySource(const android::sp<android::DataSource>& source, const FaultOptions& faults, Reads from);

    android::status_t initCheck() const override { return mSource->initCheck(); }
    ssize_t readAt(off64_t offset, void* data, size_t size) override;
    // 0 and ERROR_UNSUPPORTED when the size is to be unknown.
    android::status_t getSize(off64_t* size) override;
    uint32_t flags() override { return mSource->flags(); }
    android::String8 getUri() override { return mSource->getUri(); }
    android::String8 getMIMEType() const override { return mSource->getMIMEType(); }

    Reads reads() const { return {mAll, mLonger}; }

  private:
    const android::sp<android::DataSource> mSource;
    const FaultOptions mFaults;
    std::atomic<uint64_t> mAll, mLonger;
};

}  // namespace mkvx
