// The file that a result is written to.
//
// Made at the first write, so that what is refused leaves nothing behind; a file that could not be
// completed is removed again, if it is a regular one. Every failure throws FileFailure.
#pragma once
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace mkvx {

class ExtractFile {
  public:
    explicit ExtractFile(std::string path) : mPath(std::move(path)) {}
    ~ExtractFile();
    ExtractFile(const ExtractFile&) = delete;
    ExtractFile& operator=(const ExtractFile&) = delete;

    const std::string& path() const { return mPath; }
    uint64_t size() const { return mSize; }

    void write(const void* data, size_t size);
    void write(const std::vector<uint8_t>& bytes) { write(bytes.data(), bytes.size()); }
    void write(const std::string& text) { write(text.data(), text.size()); }
    // Overwrites bytes that were written before.
    void patch(uint64_t offset, const std::vector<uint8_t>& bytes);
    // Completes the file; an empty one is made when nothing was written.
    void close();

  private:
    void open();
    [[noreturn]] void fail();

    std::string mPath;
    std::FILE* mFile = nullptr;
    uint64_t mSize = 0;
};

// Throws UsageFailure when both paths lead to one file that exists.
void requireOtherFile(const std::string& toRead, const std::string& toWrite);

// Little- and big-endian numbers for the headers of the formats.
void appendLittle(std::vector<uint8_t>& out, uint64_t value, int bytes);
void appendText(std::vector<uint8_t>& out, const char* text);

}  // namespace mkvx
