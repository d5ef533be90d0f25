#include "base/OutputFile.h"

#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <cstring>

#include "base/Failure.h"

namespace mkvx {

ExtractFile::~ExtractFile() {
    if (mFile == nullptr) return;
    std::fclose(mFile);
    struct stat info {};
    if (::stat(mPath.c_str(), &info) == 0 && S_ISREG(info.st_mode)) ::unlink(mPath.c_str());
}

void ExtractFile::fail() {
    throw FileFailure(mPath, std::string("cannot be written: ") + std::strerror(errno));
}

void ExtractFile::open() {
    if (mFile == nullptr) mFile = std::fopen(mPath.c_str(), "wb");
    if (mFile == nullptr) fail();
}

void ExtractFile::write(const void* data, size_t size) {
    open();
    if (size > 0 && std::fwrite(data, 1, size, mFile) != size) fail();
    mSize += size;
}

void ExtractFile::patch(uint64_t offset, const std::vector<uint8_t>& bytes) {
    open();
    if (std::fseek(mFile, long(offset), SEEK_SET) != 0) fail();
    if (std::fwrite(bytes.data(), 1, bytes.size(), mFile) != bytes.size()) fail();
    if (std::fseek(mFile, 0, SEEK_END) != 0) fail();
}

void ExtractFile::close() {
    open();
    std::FILE* file = mFile;
    if (std::fflush(file) != 0) fail();
    mFile = nullptr;
    if (std::fclose(file) != 0) fail();
}

void requireOtherFile(const std::string& toRead, const std::string& toWrite) {
    struct stat first {
    }, second{};
    if (::stat(toRead.c_str(), &first) != 0 || ::stat(toWrite.c_str(), &second) != 0) return;
    if (first.st_dev == second.st_dev && first.st_ino == second.st_ino)
        throw UsageFailure(toWrite + " is the file to read: -o takes the path of another one");
}

void appendLittle(std::vector<uint8_t>& out, uint64_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) out.push_back(uint8_t(value >> 8 * i));
}

void appendText(std::vector<uint8_t>& out, const char* text) {
    out.insert(out.end(), text, text + std::strlen(text));
}

}  // namespace mkvx
