// Everything that is logged through liblog while the object lives, from every thread, debug and verbose
// included. Captures nest: the innermost one gets the records. Restores liblog's own output afterwards.
#pragma once

#include <android/log.h>

#include <mutex>
#include <ostream>
#include <string>
#include <vector>

namespace testing_support {

struct LogRecord {
    int priority = 0;  // ANDROID_LOG_DEBUG, ...
    std::string tag;
    std::string text;

    bool operator==(const LogRecord& other) const {
        return priority == other.priority && tag == other.tag && text == other.text;
    }
};
std::ostream& operator<<(std::ostream& out, const LogRecord& record);

class LogCapture {
  public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<LogRecord> Records() const;
    // Only those with this tag, in order.
    std::vector<LogRecord> WithTag(const std::string& tag) const;
    size_t Count(int priority, const std::string& tag, const std::string& text) const;
    void Clear();

  private:
    static void Receive(const struct __android_logger_data* data, const char* message);

    mutable std::mutex mMutex;
    std::vector<LogRecord> mRecords;
    LogCapture* mOuter;
    int mOldPriority;
};

}  // namespace testing_support
