#define LOG_TAG "HostSources"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include <host/MappedSource.h>
#include <host/MemorySource.h>
#include <host/PreadSource.h>

namespace android {
namespace host {

namespace {

// The size of what can be read at any offset, or why that is not possible.
status_t randomAccessSize(int fd, off64_t* size) {
    struct stat64 facts;
    if (fstat64(fd, &facts) != 0) return -errno;
    if (S_ISDIR(facts.st_mode)) return -EISDIR;
    const off64_t end = lseek64(fd, 0, SEEK_END);
    if (end < 0) return -errno;
    *size = end;
    return OK;
}

// How many of `total` bytes lie at or behind `offset`; BAD_VALUE for a negative one.
off64_t bytesBehind(off64_t offset, off64_t total) {
    if (offset < 0) return BAD_VALUE;
    return offset < total ? total - offset : 0;
}

// Copies the part of a `total` bytes long block that a read asks for.
ssize_t copyFrom(const uint8_t* bytes, size_t total, off64_t offset, void* data, size_t size) {
    const off64_t rest = bytesBehind(offset, static_cast<off64_t>(total));
    if (rest <= 0) return static_cast<ssize_t>(rest);
    const size_t count = std::min(size, static_cast<size_t>(rest));
    // Parsers read many single bytes; those need no call.
    if (count == 1) {
        *static_cast<uint8_t*>(data) = bytes[offset];
    } else if (count > 0) {
        memcpy(data, bytes + offset, count);
    }
    return static_cast<ssize_t>(count);
}

int openForReading(const char* path) {
    return open(path, O_RDONLY | O_LARGEFILE | O_CLOEXEC);
}

}  // namespace

PreadSource::PreadSource(const char* path)
    : mPath(path), mFd(openForReading(path)), mStatus(mFd < 0 ? -errno : OK), mSize(0) {
    if (mStatus == OK) mStatus = randomAccessSize(mFd, &mSize);
}

PreadSource::PreadSource(int fd) : mFd(fd), mStatus(OK), mSize(0) {
    mStatus = randomAccessSize(mFd, &mSize);
}

PreadSource::~PreadSource() {
    if (mFd >= 0) close(mFd);
}

ssize_t PreadSource::readAt(off64_t offset, void* data, size_t size) {
    if (mStatus != OK) return mStatus;
    const off64_t rest = bytesBehind(offset, mSize);
    if (rest <= 0) return static_cast<ssize_t>(rest);
    size = static_cast<size_t>(std::min<uint64_t>({size, static_cast<uint64_t>(rest), SSIZE_MAX}));
    size_t done = 0;
    // One call, save where a signal interrupts it or the kernel's limit for one (about 2 GiB) cuts it short.
    while (done < size) {
        const ssize_t count = pread64(mFd, static_cast<uint8_t*>(data) + done, size - done,
                                      offset + static_cast<off64_t>(done));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return done > 0 ? static_cast<ssize_t>(done) : -errno;
        if (count == 0) break;  // the file is shorter now
        done += static_cast<size_t>(count);
    }
    return static_cast<ssize_t>(done);
}

status_t PreadSource::getSize(off64_t* size) {
    *size = mSize;
    return mStatus;
}

MappedSource::MappedSource(const char* path) : mPath(path), mBytes(nullptr), mSize(0), mStatus(OK) {
    const int fd = openForReading(path);
    mStatus = fd < 0 ? -errno : map(fd);
    if (fd >= 0) close(fd);
}

MappedSource::~MappedSource() {
    if (mBytes != nullptr) munmap(const_cast<uint8_t*>(mBytes), mSize);
}

status_t MappedSource::map(int fd) {
    off64_t size = 0;
    const status_t status = randomAccessSize(fd, &size);
    if (status != OK || size == 0) return status;
    if (static_cast<uint64_t>(size) > SIZE_MAX) return NO_MEMORY;
    void* mapping = mmap(nullptr, static_cast<size_t>(size), PROT_READ, MAP_PRIVATE, fd, 0);
    if (mapping == MAP_FAILED) return -errno;
    mBytes = static_cast<const uint8_t*>(mapping);
    mSize = static_cast<size_t>(size);
    return OK;
}

ssize_t MappedSource::readAt(off64_t offset, void* data, size_t size) {
    if (mStatus != OK) return mStatus;
    return copyFrom(mBytes, mSize, offset, data, size);
}

status_t MappedSource::getSize(off64_t* size) {
    *size = static_cast<off64_t>(mSize);
    return mStatus;
}

MemorySource::MemorySource(std::vector<uint8_t> bytes)
    : mOwned(std::move(bytes)), mBytes(mOwned.data()), mSize(mOwned.size()) {}

MemorySource::MemorySource(const void* bytes, size_t size)
    : mBytes(static_cast<const uint8_t*>(bytes)), mSize(size) {}

ssize_t MemorySource::readAt(off64_t offset, void* data, size_t size) {
    return copyFrom(mBytes, mSize, offset, data, size);
}

status_t MemorySource::getSize(off64_t* size) {
    *size = static_cast<off64_t>(mSize);
    return OK;
}

}  // namespace host
}  // namespace android
