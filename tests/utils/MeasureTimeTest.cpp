// Times taken on a clock that these tests set.
#include "utils/MeasureTime.h"

#include <android/log.h>
#include <gtest/gtest.h>
#include <sys/time.h>

#include <string>
#include <vector>

#include "support/LogCapture.h"

namespace {
timeval gNow = {1000, 999500};
}

// Takes the place of the C library's clock in this program.
extern "C" __attribute__((visibility("default"))) int gettimeofday(timeval* now, void*) noexcept {
    *now = gNow;
    return 0;
}

namespace {

using android::MeasureTime;
using testing_support::LogCapture;
using testing_support::LogRecord;

timeval After(const timeval& from, long long us) {
    const long long total = from.tv_sec * 1000000LL + from.tv_usec + us;
    return {static_cast<time_t>(total / 1000000), static_cast<suseconds_t>(total % 1000000)};
}

TEST(MeasureTime, CountsWholeMillisecondsForwards) {
    MeasureTime timer("t");
    const struct {
        long long us;
        unsigned ms;
    } rows[] = {
        {0, 0},
        {999, 0},
        {1000, 1},
        {1999, 1},
        {999999, 999},
        {1000000, 1000},
        {259200000000, 259200000},
        {4294967295000, 4294967295},
        {4294967296000, 4294967295},
        // A clock that was set back gives zero.
        {-1, 0},
        {-2000, 0},
        {-1000000, 0},
        {-900000000, 0},
    };
    for (const auto& row : rows) {
        timeval end = After(gNow, row.us);
        EXPECT_EQ(row.ms, timer.measure(&end)) << row.us;
    }
}

std::vector<LogRecord> Said(const std::string& line) {
    return {{ANDROID_LOG_ERROR, "Utils", line}};
}

TEST(MeasureTime, TheEndOfAScopeOfTwoMillisecondsIsLogged) {
    for (const long long us : {1999, 2000}) {
        LogCapture log;
        {
            std::string name = "decode";
            MeasureTime timer(name.c_str());
            name = "gone";
            gNow = After(gNow, us);
        }
        EXPECT_EQ(us < 2000 ? std::vector<LogRecord>() : Said("decode : spend time = 2 ms"), log.Records());
    }
}

TEST(MeasureTime, PrintsOnRequestHoweverShort) {
    LogCapture log;
    MeasureTime timer(nullptr);
    gNow = After(gNow, 30000);
    timer.PrintCostTime("first");
    EXPECT_EQ(Said(" first: spend time = 30 ms"), log.Records());
    log.Clear();
    timer.resetStartTime();
    timer.PrintCostTime(nullptr);
    EXPECT_EQ(Said(" : spend time = 0 ms"), log.Records());
}

}  // namespace
