#include "base/SafeFolder.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <vector>

#include "base/Failure.h"
#include "base/Text.h"

namespace mkvx {
namespace {

constexpr size_t kLongestName = 200, kLongestExtension = 16;
constexpr int kMostTries = 10000;
constexpr size_t kChunk = 64 * 1024;

bool isContinuation(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

// Where the last dot's extension begins; the end of the name where it has none.
size_t extensionOf(const std::string& name) {
    const size_t dot = name.rfind('.');
    return dot == std::string::npos || dot == 0 || name.size() - dot > kLongestExtension ? name.size() : dot;
}

void shorten(std::string& name) {
    if (name.size() <= kLongestName) return;
    const std::string extension = name.substr(extensionOf(name));
    size_t length = kLongestName - extension.size();
    while (length > 0 && isContinuation(name[length])) --length;
    name = name.substr(0, length) + extension;
}

void replaceAll(std::string& text, std::string_view what, std::string_view with) {
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size()))
        text.replace(at, what.size(), with);
}

// Names that some systems take for devices, with any extension.
bool isDevice(const std::string& name) {
    static constexpr const char* kDevices[] = {"CON", "PRN", "AUX", "NUL", "COM", "LPT"};
    const std::string stem = name.substr(0, name.find('.'));
    const bool isNumbered = stem.size() == 4 && stem[3] >= '0' && stem[3] <= '9';
    return std::any_of(std::begin(kDevices), std::end(kDevices), [&](const char* device) {
        const bool hasPorts = device[0] == 'L' || std::strcmp(device, "COM") == 0;
        return ::strncasecmp(stem.c_str(), device, 3) == 0 && (hasPorts ? isNumbered : stem.size() == 3);
    });
}

bool mayBegin(char c) {
    return static_cast<unsigned char>(c) >= 0x80 || std::isalnum(static_cast<unsigned char>(c)) != 0 ||
           c == '_';
}

std::string numbered(const std::string& name, int number) {
    const size_t dot = extensionOf(name);
    return fmt::format("{}-{}{}", name.substr(0, dot), number, name.substr(dot));
}

// A new file that is removed again unless it was completed.
class NewFile {
  public:
    NewFile(int folder, std::string name, int descriptor)
        : mFolder(folder), mName(std::move(name)), mDescriptor(descriptor) {}
    ~NewFile() {
        if (mDescriptor >= 0) ::close(mDescriptor);
        if (!mIsDone) ::unlinkat(mFolder, mName.c_str(), 0);
    }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    bool write(const uint8_t* bytes, size_t size) {
        while (size > 0) {
            const ssize_t put = ::write(mDescriptor, bytes, size);
            if (put < 0 && errno == EINTR) continue;
            if (put <= 0) return false;
            bytes += put;
            size -= size_t(put);
        }
        return true;
    }
    bool finish() {
        mIsDone = ::close(mDescriptor) == 0;
        mDescriptor = -1;
        return mIsDone;
    }

  private:
    int mFolder;
    std::string mName;
    int mDescriptor;
    bool mIsDone = false;
};

}  // namespace

std::string safeFileName(const std::string& name) {
    std::string safe = printable(name);
    replaceAll(safe, "\xEF\xBF\xBD", "_");
    for (char& c : safe)
        if (std::strchr("/\\:*?\"<>|", c) != nullptr) c = '_';
    shorten(safe);
    while (!safe.empty() && (safe.back() == '.' || safe.back() == ' ')) safe.pop_back();
    if (safe.empty()) return "attachment";
    if (!mayBegin(safe[0])) safe[0] = '_';
    return isDevice(safe) ? "_" + safe : safe;
}

SafeFolder::SafeFolder(const std::string& path) : mPath(path) {
    if (::mkdir(path.c_str(), 0777) != 0 && errno != EEXIST) throw FileFailure(path, std::strerror(errno));
    mFolder = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (mFolder < 0) throw FileFailure(path, std::strerror(errno));
}

SafeFolder::~SafeFolder() {
    ::close(mFolder);
}

// A descriptor of a file that was not there before, and its name.
int SafeFolder::create(const std::string& name, std::string* chosen) const {
    *chosen = name;
    for (int number = 2; number < kMostTries; ++number) {
        const int file =
            ::openat(mFolder, chosen->c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
        if (file >= 0) return file;
        if (errno != EEXIST) break;
        *chosen = numbered(name, number);
    }
    throw FileFailure(mPath + "/" + *chosen, std::strerror(errno));
}

std::string SafeFolder::save(const std::string& name, android::DataSource& source, uint64_t offset,
                             uint64_t size) {
    std::string chosen;
    const int descriptor = create(safeFileName(name), &chosen);
    NewFile file(mFolder, chosen, descriptor);
    std::vector<uint8_t> chunk(size_t(std::min<uint64_t>(size, kChunk)));
    for (uint64_t done = 0; done < size;) {
        const size_t want = size_t(std::min<uint64_t>(chunk.size(), size - done));
        const ssize_t got = source.readAt(off64_t(offset + done), chunk.data(), want);
        if (got != ssize_t(want))
            throw FileFailure(chosen, fmt::format("only {} of its {} bytes are in the file",
                                                  done + uint64_t(std::max<ssize_t>(got, 0)), size));
        if (!file.write(chunk.data(), want)) throw FileFailure(mPath + "/" + chosen, std::strerror(errno));
        done += want;
    }
    if (!file.finish()) throw FileFailure(mPath + "/" + chosen, std::strerror(errno));
    return chosen;
}

}  // namespace mkvx
