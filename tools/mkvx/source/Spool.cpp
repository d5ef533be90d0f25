#include "source/Spool.h"

#include <fcntl.h>
#include <host/PreadSource.h>
#include <unistd.h>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "base/Progress.h"
#include "base/Text.h"

namespace mkvx {
namespace {

constexpr char kInput[] = "standard input";

std::string temporaryFolder() {
    const char* chosen = std::getenv("TMPDIR");
    return chosen != nullptr && *chosen != '\0' ? chosen : "/tmp";
}

std::unique_ptr<Spool> readInput() {
    auto spool = std::make_unique<Spool>(kInput);
    Progress progress(kInput, ProgressStyle::kLine);
    std::vector<char> chunk(1 << 18);
    while (true) {
        if (!waitToRead(STDIN_FILENO)) throwIfInterrupted(kInput, counted(spool->size(), "byte"));
        const ssize_t count = ::read(STDIN_FILENO, chunk.data(), chunk.size());
        if (count == 0) return spool;
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) throw FileFailure(kInput, std::string("cannot be read: ") + std::strerror(errno));
        spool->append(chunk.data(), size_t(count));
        progress.reachBytes(spool->size());
    }
}

}  // namespace

Spool::Spool(std::string what) : mWhat(std::move(what)), mFolder(temporaryFolder()) {
    std::string name = mFolder + "/mkvx-XXXXXX";
    mFd = ::mkostemp(name.data(), O_CLOEXEC);
    if (mFd < 0) fail(errno);
    ::unlink(name.c_str());
}

Spool::~Spool() {
    if (mFd >= 0) ::close(mFd);
}

void Spool::fail(int error) const {
    throw FileFailure(mWhat, "cannot be kept in a temporary file in " + mFolder + ": " +
                                 std::strerror(error) + " (TMPDIR chooses another folder)");
}

void Spool::append(const void* data, size_t size) {
    const char* from = static_cast<const char*>(data);
    while (size > 0) {
        const ssize_t count = ::write(mFd, from, size);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) fail(count < 0 ? errno : ENOSPC);
        from += count;
        size -= size_t(count);
        mSize += uint64_t(count);
    }
}

android::sp<android::DataSource> Spool::source() const {
    const int own = ::fcntl(mFd, F_DUPFD_CLOEXEC, 0);
    if (own < 0) fail(errno);
    return new android::host::PreadSource(own);
}

std::string Spool::path() const {
    return "/proc/self/fd/" + std::to_string(mFd);
}

const Spool& spooledInput() {
    static const std::unique_ptr<Spool> spool = readInput();
    return *spool;
}

}  // namespace mkvx
