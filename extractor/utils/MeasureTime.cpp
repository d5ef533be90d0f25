#include "utils/MeasureTime.h"

#include <stddef.h>
#include <string.h>

#include <new>

#include <android/log.h>

namespace android {
namespace {

constexpr unsigned int kWorthTellingMs = 2;

void LogCost(const char* name, const char* suffix, unsigned int ms) {
    __android_log_print(ANDROID_LOG_ERROR, "Utils", "%s %s: spend time = %d ms", name != nullptr ? name : "",
                        suffix != nullptr ? suffix : "", static_cast<int>(ms));
}

timeval Now() {
    timeval now;
    gettimeofday(&now, nullptr);
    return now;
}

}  // namespace

MeasureTime::MeasureTime(const char* name) : mStart(Now()) {
    if (name == nullptr) name = "";
    const size_t size = strlen(name) + 1;
    mName.reset(new (std::nothrow) char[size]);
    if (mName != nullptr) memcpy(mName.get(), name, size);
}

MeasureTime::~MeasureTime() {
    timeval now = Now();
    const unsigned int ms = measure(&now);
    if (ms >= kWorthTellingMs) LogCost(mName.get(), nullptr, ms);
}

void MeasureTime::resetStartTime() {
    mStart = Now();
}

unsigned int MeasureTime::measure(timeval* now) {
    const long long seconds = static_cast<long long>(now->tv_sec) - mStart.tv_sec;
    const long long micros = static_cast<long long>(now->tv_usec) - mStart.tv_usec;
    const double ms = 1000.0 * static_cast<double>(seconds) + static_cast<double>(micros) / 1000.0;
    if (!(ms > 0.0)) return 0;
    return ms >= 4294967295.0 ? 4294967295u : static_cast<unsigned int>(ms);
}

void MeasureTime::PrintCostTime(const char* suffix) {
    timeval now = Now();
    LogCost(mName.get(), suffix, measure(&now));
}

}  // namespace android
