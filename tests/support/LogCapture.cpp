#include "support/LogCapture.h"

#include <algorithm>
#include <atomic>

namespace testing_support {

namespace {
std::atomic<LogCapture*> gInnermost{nullptr};
}  // namespace

std::ostream& operator<<(std::ostream& out, const LogRecord& record) {
    return out << record.priority << '/' << record.tag << ": " << record.text;
}

LogCapture::LogCapture()
    : mOuter(gInnermost.load()), mOldPriority(__android_log_set_minimum_priority(ANDROID_LOG_VERBOSE)) {
    gInnermost = this;
    __android_log_set_logger(&LogCapture::Receive);
}

LogCapture::~LogCapture() {
    gInnermost = mOuter;
    if (mOuter == nullptr) __android_log_set_logger(&__android_log_stderr_logger);
    __android_log_set_minimum_priority(mOldPriority);
}

void LogCapture::Receive(const struct __android_logger_data* data, const char* message) {
    LogCapture* const capture = gInnermost;
    if (capture == nullptr) return;
    std::lock_guard<std::mutex> lock(capture->mMutex);
    capture->mRecords.push_back({data->priority, data->tag != nullptr ? data->tag : "", message});
}

std::vector<LogRecord> LogCapture::Records() const {
    std::lock_guard<std::mutex> lock(mMutex);
    return mRecords;
}

std::vector<LogRecord> LogCapture::WithTag(const std::string& tag) const {
    std::vector<LogRecord> matching;
    for (const LogRecord& record : Records()) {
        if (record.tag == tag) matching.push_back(record);
    }
    return matching;
}

size_t LogCapture::Count(int priority, const std::string& tag, const std::string& text) const {
    const std::vector<LogRecord> records = Records();
    return static_cast<size_t>(std::count(records.begin(), records.end(), LogRecord{priority, tag, text}));
}

void LogCapture::Clear() {
    std::lock_guard<std::mutex> lock(mMutex);
    mRecords.clear();
}

}  // namespace testing_support
