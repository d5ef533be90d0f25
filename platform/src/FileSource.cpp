#define LOG_TAG "FileSource"

#include <media/stagefright/FileSource.h>

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <unistd.h>

#include <media/stagefright/foundation/ADebug.h>

namespace android {

FileSource::FileSource(const char* filename)
    : mFd(open(filename, O_LARGEFILE | O_RDONLY | O_CLOEXEC)), mOffset(0), mLength(-1) {
    if (mFd >= 0) {
        mLength = lseek64(mFd, 0, SEEK_END);
    } else {
        ALOGE("cannot open '%s': %s", filename, strerror(errno));
    }
}

FileSource::FileSource(int fd, int64_t offset, int64_t length) : mFd(fd), mOffset(offset), mLength(length) {
    CHECK(offset >= 0);
    CHECK(length >= 0);
}

FileSource::~FileSource() {
    if (mFd >= 0) close(mFd);
}

status_t FileSource::initCheck() const {
    return mFd >= 0 ? OK : NO_INIT;
}

ssize_t FileSource::readAt(off64_t offset, void* data, size_t size) {
    if (mFd < 0) return NO_INIT;

    Mutex::Autolock autoLock(mLock);
    if (mLength >= 0) {
        if (offset >= mLength) return 0;
        // Unsigned: a negative offset, which is not refused here, makes the rest of the window longer than
        // itself.
        const uint64_t rest = static_cast<uint64_t>(mLength) - static_cast<uint64_t>(offset);
        if (size > rest) size = static_cast<size_t>(rest);
    }
    // Deliberate: a negative offset reads in front of the window; only a negative sum fails.
    const int64_t position =
        static_cast<int64_t>(static_cast<uint64_t>(mOffset) + static_cast<uint64_t>(offset));
    if (position < 0 || lseek64(mFd, position, SEEK_SET) < 0) {
        ALOGE("cannot seek to %lld", static_cast<long long>(position));
        return UNKNOWN_ERROR;
    }
    return read(mFd, data, size);
}

status_t FileSource::getSize(off64_t* size) {
    if (mFd < 0) return NO_INIT;

    Mutex::Autolock autoLock(mLock);
    *size = mLength;
    return OK;
}

sp<DecryptHandle> FileSource::DrmInitialization(const char* /*mime*/) {
    return NULL;
}

void FileSource::getDrmInfo(sp<DecryptHandle>& handle, DrmManagerClient** client) {
    handle.clear();
    *client = NULL;
}

}  // namespace android
