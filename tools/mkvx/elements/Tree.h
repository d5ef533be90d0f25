// What of a file's element tree is listed: to which level, how long a row of siblings, around which byte.
//
// Streams; what it keeps does not grow with the file. Throws UsageFailure for a byte that the file does not
// have.
#pragma once
#include <deque>
#include <functional>
#include <map>
#include <string>

#include "device/ElementWalk.h"
#include "elements/Model.h"

namespace mkvx {

struct TreeOptions {
    std::optional<unsigned> depth;  // levels to list; with `at`, levels below the element that holds the byte
    bool isShortened = true;        // long rows of siblings are cut, and what is left out is counted
    std::optional<uint64_t> at;     // list only the way to this byte's element, and what that holds
    std::function<void(uint64_t offset)> onReached = [](uint64_t) {};  // hears how far the walk has come
};

class TreeReader {
  public:
    // `file` names the source in failures.
    TreeReader(const android::sp<android::DataSource>& source, const std::string& file,
               const TreeOptions& options);

    // The next item to list, with its value and meaning; nullopt at the end, and after an interruption.
    std::optional<TreeItem> next();
    std::optional<uint64_t> fileLength() const { return mWalk.length(); }

  private:
    enum class Verdict { kShow, kPassOver, kLeaveOut, kStop };

    // One level's siblings so far.
    struct Row {
        std::map<uint32_t, uint64_t> shown;  // by ID of the table
        LeftOut leftOut;
    };

    Verdict judge(const WalkItem& item);
    Verdict judgeAround(const WalkItem& item, uint64_t at);
    bool isTooMany(const WalkItem& item);
    void leaveOut(const WalkItem& item);
    void closeRows(unsigned depth);
    void flush(unsigned depth);
    void show(WalkItem item);
    void stop();
    std::optional<TreeItem> takeReady();

    TreeOptions mOptions;
    std::optional<WalkItem> mTarget;  // the deepest item that holds the byte `at`
    bool mIsInTarget = false;
    ElementWalk mWalk;
    std::vector<Row> mRows;  // by depth
    std::deque<TreeItem> mReady;
    bool mIsOver = false;
};

// The items of the file that hold the byte, with values, from the top to the deepest. Throws UsageFailure
// when there is none.
std::vector<TreeItem> wayTo(const android::sp<android::DataSource>& source, const std::string& file,
                            uint64_t at);

}  // namespace mkvx
