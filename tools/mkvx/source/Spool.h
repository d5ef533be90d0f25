// Bytes that come only once, kept in a temporary file so that they can be read at any offset.
//
// The file lies in $TMPDIR, or /tmp, and has no name from the moment it is made: it goes with the process,
// however that ends.
#pragma once
#include <media/stagefright/DataSource.h>
#include <cstdint>
#include <string>

namespace mkvx {

class Spool {
  public:
    // `what` the bytes are of, for errors. Throws FileFailure when there is no room for a temporary file.
    explicit Spool(std::string what);
    ~Spool();
    Spool(const Spool&) = delete;
    Spool& operator=(const Spool&) = delete;

    // Throws FileFailure when the disk is full.
    void append(const void* data, size_t size);
    uint64_t size() const { return mSize; }
    // The file as a byte source with a descriptor of its own; what is appended later is not in it.
    android::sp<android::DataSource> source() const;
    // A path that names the file as long as this object lives.
    std::string path() const;

  private:
    [[noreturn]] void fail(int error) const;

    const std::string mWhat;
    std::string mFolder;
    int mFd = -1;
    uint64_t mSize = 0;
};

// Standard input up to its end, which is waited for, with the progress on stderr. It is read once in the life
// of the process; later calls give the same bytes. Throws FileFailure.
const Spool& spooledInput();

}  // namespace mkvx
