// The opening of a file as the plug-in does it, up to where the tracks are looked at: for those who watch
// what it reads, and where it is led.
//
// Silent. Bounded as opening is. One thread.
#pragma once
#include <media/stagefright/DataSource.h>
#include <cstdint>
#include <memory>
#include <vector>

namespace mkvx {

// An entry of a SeekHead.
struct SeekTarget {
    uint32_t id = 0;
    uint64_t position = 0;  // in the file; what stands there may be something else
};

class Opening {
  public:
    // Reads the document.
    explicit Opening(const android::sp<android::DataSource>& source);
    ~Opening();
    Opening(const Opening&) = delete;
    Opening& operator=(const Opening&) = delete;

    // False: opening gives the file up, and there is nothing in it.
    bool isReadable() const;
    // Of all SeekHeads that opening has read.
    std::vector<SeekTarget> seekTargets() const;
    // Visits the Clusters for an index, as opening goes on to where the source is no network stream, unless
    // the document has Cues.
    void scanForIndex();

  private:
    struct State;
    std::unique_ptr<State> mState;
};

}  // namespace mkvx
