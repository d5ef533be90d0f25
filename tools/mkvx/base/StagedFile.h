// A file that other programs write, and that takes its place when it is whole: nobody meets a half of it,
// nothing that is there is overwritten, and no link is followed.
//
// It is made in a private folder beside its place, ".mkvx-" and six characters, which goes with this object,
// and with it whatever else the programs left there. One thread.
#pragma once
#include <string>

namespace mkvx {

class StagedFile {
  public:
    // Throws FileFailure when something is at `path` (a link that leads nowhere counts), or nothing can be
    // written beside it.
    explicit StagedFile(const std::string& path);
    ~StagedFile();
    StagedFile(const StagedFile&) = delete;
    StagedFile& operator=(const StagedFile&) = delete;

    // The private folder; and the file in it that is to be written, and its name there.
    const std::string& folder() const { return mFolder; }
    std::string file() const { return mFolder + "/" + name(); }
    static std::string name() { return "mended.mkv"; }

    // Removes what was written so far.
    void clear();
    // Throws FileFailure, also when something has come to be at the path since.
    void putInPlace();

  private:
    std::string mPath, mFolder;
};

}  // namespace mkvx
