// The platform's optional codec library: a closed shared object that maps FourCCs to its own codec
// identifiers. Most devices lack it, which is not an error.
#pragma once

namespace android {

class OptionalCodecLibrary {
  public:
    // `path` is what the dynamic loader is given; the text must outlive this object.
    constexpr explicit OptionalCodecLibrary(const char* path) : mPath(path) {}

    // The library that getCodecIDFromFourCC asks: the device's own, until it is told otherwise.
    static OptionalCodecLibrary& Installed();

    // Asks another library from now on. Not while another thread may be asking.
    void setPath(const char* path) { mPath = path; }
    const char* path() const { return mPath; }

    // Loads the library, looks its function up and calls it. -1, and the reason in the log, where that fails.
    int codecId(unsigned int fourcc) const;

  private:
    const char* mPath;
};

}  // namespace android
