// FlaggedSource: what the host's own sources share, settable flags. Real sources of a device report what the
// network or a cache is like through them; a test says here what a reader shall be told. Thread-safe.
#pragma once

#include <atomic>

#include <media/stagefright/DataSource.h>

namespace android {
namespace host {

class FlaggedSource : public DataSource {
  public:
    // 0 unless set.
    uint32_t flags() override { return mFlags.load(std::memory_order_relaxed); }
    void setFlags(uint32_t flags) { mFlags.store(flags, std::memory_order_relaxed); }

  private:
    std::atomic<uint32_t> mFlags{0};
};

}  // namespace host
}  // namespace android
