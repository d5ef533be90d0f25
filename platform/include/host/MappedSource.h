// MappedSource: a regular file as a read-only memory mapping; a read is a copy from it.
//
// Caches what the kernel's page cache holds; the size is taken when the source is made. flags() is 0 unless
// set. Safe from any number of threads at once. The file must not get shorter while it is mapped: a read
// behind its new end ends the process (SIGBUS). Files that do not fit the address space give -ENOMEM. An
// unusable source says why in initCheck(), as a negated errno value.
#pragma once

#include <host/FlaggedSource.h>

namespace android {
namespace host {

class MappedSource : public FlaggedSource {
  public:
    explicit MappedSource(const char* path);

    status_t initCheck() const override { return mStatus; }
    // BAD_VALUE for a negative offset.
    ssize_t readAt(off64_t offset, void* data, size_t size) override;
    status_t getSize(off64_t* size) override;
    String8 getUri() override { return mPath; }

    // The bytes themselves, for the life of the source; null for an empty or unusable file.
    const uint8_t* bytes() const { return mBytes; }

  protected:
    ~MappedSource() override;

  private:
    status_t map(int fd);

    String8 mPath;
    const uint8_t* mBytes;  // owned mapping of mSize bytes
    size_t mSize;
    status_t mStatus;
};

}  // namespace host
}  // namespace android
