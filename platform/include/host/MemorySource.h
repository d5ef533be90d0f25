// MemorySource: bytes in memory, owned or borrowed; a read is a copy.
//
// It is the medium itself and caches nothing. flags() is 0 unless set. Safe from any number of threads at
// once as long as nobody changes borrowed bytes.
#pragma once

#include <stdint.h>

#include <vector>

#include <host/FlaggedSource.h>

namespace android {
namespace host {

class MemorySource : public FlaggedSource {
  public:
    explicit MemorySource(std::vector<uint8_t> bytes);
    // Borrowed: they outlive the source.
    MemorySource(const void* bytes, size_t size);

    status_t initCheck() const override { return OK; }
    // BAD_VALUE for a negative offset.
    ssize_t readAt(off64_t offset, void* data, size_t size) override;
    status_t getSize(off64_t* size) override;

  private:
    std::vector<uint8_t> mOwned;
    const uint8_t* mBytes;  // into mOwned, or borrowed
    size_t mSize;
};

}  // namespace host
}  // namespace android
