#include "base/Log.h"

#include <android/log.h>
#include <fmt/format.h>
#include <algorithm>
#include <cstdio>

namespace mkvx {
namespace {

thread_local int muteDepth = 0;
int shownFrom = ANDROID_LOG_SILENT;

char priorityLetter(int priority) {
    static const char letters[] = "??VDIWEFS";
    return priority >= 0 && priority <= ANDROID_LOG_SILENT ? letters[priority] : '?';
}

void showRecord(const __android_logger_data* record, const char* text) {
    if (muteDepth > 0 || record->priority < shownFrom) return;
    fmt::print(stderr, "{}/{}: {}\n", priorityLetter(record->priority), record->tag ? record->tag : "", text);
}

}  // namespace

const std::vector<std::string>& logLevels() {
    static const std::vector<std::string> levels{"verbose", "debug", "info", "warn", "error", "off"};
    return levels;
}

void installLogger(const std::string& level) {
    const auto& levels = logLevels();
    auto place = std::find(levels.begin(), levels.end(), level);
    shownFrom = place == levels.end() || *place == "off" ? int(ANDROID_LOG_SILENT)
                                                         : ANDROID_LOG_VERBOSE + int(place - levels.begin());
    __android_log_set_logger(showRecord);
    // Below its own threshold liblog hands nothing to the hook, and formats nothing either.
    __android_log_set_minimum_priority(shownFrom);
}

MuteLog::MuteLog() {
    ++muteDepth;
}
MuteLog::~MuteLog() {
    --muteDepth;
}

}  // namespace mkvx
