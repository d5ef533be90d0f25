// A file of results that a run goes on with: what it says of files that have not changed since is not found
// out again.
#pragma once
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "check/FolderWalk.h"
#include "check/Model.h"

namespace mkvx {

class Journal {
  public:
    // Makes the file where there is none. A torn last line goes. Throws FileFailure, also when another run
    // has it open.
    explicit Journal(std::string path);
    ~Journal();
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    const std::string& path() const { return mPath; }
    // Those of the files that the journal does not know as they are now. `onKnown` gets the results of the
    // others.
    std::vector<FoundFile> unknownOf(const std::vector<FoundFile>& files,
                                     const std::function<void(const CheckedFile&)>& onKnown) const;
    // At once, as one line.
    void append(const CheckedFile& checked);

  private:
    std::string mPath;
    int mFile = -1;
};

}  // namespace mkvx
