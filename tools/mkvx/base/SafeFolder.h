// Files under names that somebody else chose: a hostile name never leaves the folder, hides, steers a
// terminal or a shell, or takes the place of a file that is there.
#pragma once
#include <media/stagefright/DataSource.h>
#include <cstdint>
#include <string>

namespace mkvx {

// The name without separators, control characters and characters that other systems reserve, with nothing but
// a letter, digit or '_' in front, at most 200 bytes, and not empty. A name that is fine stays as it is.
std::string safeFileName(const std::string& name);

class SafeFolder {
  public:
    // Makes the folder where there is none; its parent has to exist. Throws FileFailure.
    explicit SafeFolder(const std::string& path);
    ~SafeFolder();
    SafeFolder(const SafeFolder&) = delete;
    SafeFolder& operator=(const SafeFolder&) = delete;

    // Copies `size` bytes of the source from `offset` to a new file and returns its name: the safe form of
    // `name`, numbered where that is taken. Throws FileFailure, without leaving a file, when they cannot be
    // read or written.
    std::string save(const std::string& name, android::DataSource& source, uint64_t offset, uint64_t size);

  private:
    int create(const std::string& name, std::string* chosen) const;

    std::string mPath;
    int mFolder;  // owned descriptor
};

}  // namespace mkvx
