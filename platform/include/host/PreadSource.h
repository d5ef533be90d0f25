// PreadSource: a regular file or block device through pread(2), one call per read.
//
// Caches nothing but the size, taken when the source is made; bytes come from the kernel at every read.
// flags() is 0 unless set. Safe from any number of threads at once, which do not wait for each other. Sizes
// are 64-bit. An unusable source says why in initCheck(), as a negated errno value: -ENOENT, -EISDIR, -ESPIPE
// for a pipe and so on.
#pragma once

#include <host/FlaggedSource.h>

namespace android {
namespace host {

class PreadSource : public FlaggedSource {
  public:
    explicit PreadSource(const char* path);
    // Takes the descriptor over and closes it.
    explicit PreadSource(int fd);

    status_t initCheck() const override { return mStatus; }
    // Fewer bytes than asked for only at the end, which is the size taken at first also when the file has
    // grown. BAD_VALUE for a negative offset; another failure is a negated errno value.
    ssize_t readAt(off64_t offset, void* data, size_t size) override;
    status_t getSize(off64_t* size) override;
    // The path as given; empty for a descriptor.
    String8 getUri() override { return mPath; }

  protected:
    ~PreadSource() override;

  private:
    String8 mPath;
    int mFd;  // owned; negative when there is none
    status_t mStatus;
    off64_t mSize;
};

}  // namespace host
}  // namespace android
