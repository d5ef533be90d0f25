// FileSource: a file, or a window of one, through lseek and read on one descriptor.
//
// Caches nothing but the length; flags() is 0. The length is taken once, when the source is made. A source
// whose file could not be opened answers NO_INIT to everything. Calls from several threads are safe and take
// turns.
#pragma once

#include <utils/threads.h>

#include <drm/DrmManagerClient.h>
#include <media/stagefright/DataSource.h>
#include <media/stagefright/MediaErrors.h>

namespace android {

class FileSource : public DataSource {
  public:
    // The whole file.
    explicit FileSource(const char* filename);
    // The `length` bytes at `offset`; aborts when one is negative. Takes the descriptor over and closes it.
    // The window is not compared with the file's real size.
    FileSource(int fd, int64_t offset, int64_t length);

    status_t initCheck() const override;
    // Shortened at the end of the window, 0 behind it. What read(2) returns is returned as it is: -1 on
    // error, possibly short. UNKNOWN_ERROR when the seek fails.
    ssize_t readAt(off64_t offset, void* data, size_t size) override;
    status_t getSize(off64_t* size) override;
    sp<DecryptHandle> DrmInitialization(const char* mime) override;
    void getDrmInfo(sp<DecryptHandle>& handle, DrmManagerClient** client) override;

  protected:
    ~FileSource() override;

  private:
    int mFd;          // owned; negative when the file could not be opened
    int64_t mOffset;  // of the window in the file
    int64_t mLength;  // of the window
    Mutex mLock;      // over seek and read together

    FileSource(const FileSource&);
    FileSource& operator=(const FileSource&);
};

}  // namespace android
