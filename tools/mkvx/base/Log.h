// The log of the plug-in and the platform, routed through liblog's logger hook. Off by default: a user of
// mkvx reads results. With a level, each record of that priority or above goes to stderr as "P/TAG: text".
//
// The hook is process-wide; install it once, before any library call that may log.
#pragma once
#include <string>
#include <vector>

namespace mkvx {

// The names that --log takes, from most to least talkative, "off" last.
const std::vector<std::string>& logLevels();

// `level` is one of logLevels().
void installLogger(const std::string& level);

// While one lives, this thread's records are dropped: for work that only repeats what was logged already.
class MuteLog {
  public:
    MuteLog();
    ~MuteLog();
    MuteLog(const MuteLog&) = delete;
    MuteLog& operator=(const MuteLog&) = delete;
};

}  // namespace mkvx
