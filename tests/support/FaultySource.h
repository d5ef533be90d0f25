// A byte source that lies. Its bytes live in memory; `Faults` says how it misbehaves, and it counts what is
// asked of it. Faults are set before the first read; reads and counters may come from several threads.
#pragma once

#include <utils/Errors.h>
#include <utils/String8.h>
#include <media/stagefright/DataSource.h>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <vector>

#include "support/EbmlWriter.h"

namespace testing_support {

struct Faults {
    size_t maxBytesPerCall = SIZE_MAX;      // longer requests come back short
    uint64_t shortEvery = 0;                // every n-th call (1 = each) gives one byte less than it could
    uint64_t errorAtCall = UINT64_MAX;      // counted from 0
    uint64_t errorFromOffset = UINT64_MAX;  // requests that reach this offset fail
    ssize_t error = -1004;                  // what a failing call returns (an I/O error)
    size_t claimedExtra = 0;  // added to the count of every non-empty read; nothing more is written
    android::status_t sizeStatus = android::OK;  // what getSize returns
    bool claimSize = false;                      // getSize says claimedSize instead of the true size
    off64_t claimedSize = 0;
    uint32_t flags = 0;  // what flags() returns
    bool recordCalls = false;
};

class FaultySource : public android::DataSource {
  public:
    struct Call {
        off64_t offset;
        size_t size;
    };

    explicit FaultySource(Bytes bytes, Faults faults = {});

    android::status_t initCheck() const override { return android::OK; }
    ssize_t readAt(off64_t offset, void* data, size_t size) override;
    android::status_t getSize(off64_t* size) override;
    uint32_t flags() override { return mFaults.flags; }

    uint64_t Reads() const { return mReads; }
    uint64_t BytesRead() const { return mBytesRead; }
    std::vector<Call> Calls() const;
    // True when a recorded call overlaps [begin, end).
    bool Touched(uint64_t begin, uint64_t end) const;

  private:
    size_t Available(off64_t offset, size_t size) const;
    size_t Shorten(uint64_t call, size_t available) const;

    const Bytes mBytes;
    const Faults mFaults;
    std::atomic<uint64_t> mReads{0};
    std::atomic<uint64_t> mBytesRead{0};
    mutable std::mutex mMutex;
    std::vector<Call> mCalls;
};

}  // namespace testing_support
