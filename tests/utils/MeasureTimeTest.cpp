#include "utils/MeasureTime.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>

#include "support/LogCapture.h"

namespace {

using android::MeasureTime;
using testing_support::LogCapture;

timeval Now() {
    timeval now;
    gettimeofday(&now, nullptr);
    return now;
}

timeval Later(timeval from, long long us) {
    const long long total = from.tv_sec * 1000000LL + from.tv_usec + us;
    return {static_cast<time_t>(total / 1000000), static_cast<suseconds_t>(total % 1000000)};
}

unsigned Milliseconds(const timeval& from, const timeval& to) {
    return static_cast<unsigned>((to.tv_sec - from.tv_sec) * 1000LL + (to.tv_usec - from.tv_usec) / 1000);
}

// A second in steps of a millisecond: whatever the start, most of them have to borrow from the seconds.
TEST(MeasureTime, CountsAcrossTheTurnOfASecond) {
    const timeval before = Now();
    MeasureTime timer("t");
    const timeval after = Now();
    const unsigned slack = Milliseconds(before, after) + 1;
    for (unsigned ms = 0; ms < 1500; ++ms) {
        timeval end = Later(after, ms * 1000LL);
        const unsigned measured = timer.measure(&end);
        EXPECT_GE(measured, ms);
        EXPECT_LE(measured, ms + slack);
    }
    timeval days = Later(after, 3 * 86400 * 1000000LL);
    EXPECT_GE(timer.measure(&days), 3u * 86400 * 1000);
}

TEST(MeasureTime, AClockSetBackGivesZero) {
    MeasureTime timer("t");
    for (long long us : {-2000LL, -1000000LL, -3600 * 1000000LL}) {
        timeval earlier = Later(Now(), us - 1000000);
        EXPECT_EQ(timer.measure(&earlier), 0u);
    }
}

TEST(MeasureTime, TheEndOfALongScopeIsLogged) {
    LogCapture log;
    {
        std::string name = "decode";
        MeasureTime timer(name.c_str());
        name = "gone";
        std::this_thread::sleep_for(std::chrono::milliseconds(4));
    }
    const auto records = log.Records();
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].priority, ANDROID_LOG_ERROR);
    EXPECT_EQ(records[0].tag, "Utils");
    EXPECT_THAT(records[0].text, testing::MatchesRegex("decode : spend time = [0-9]+ ms"));
}

TEST(MeasureTime, TheEndOfAShortScopeIsNot) {
    // A busy machine may hold up one of them, hardly all.
    bool silent = false;
    for (int attempt = 0; attempt < 50 && !silent; ++attempt) {
        LogCapture log;
        { MeasureTime timer("t"); }
        silent = log.Records().empty();
    }
    EXPECT_TRUE(silent);
}

TEST(MeasureTime, PrintsOnRequestHoweverShort) {
    LogCapture log;
    MeasureTime timer(nullptr);
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    timer.PrintCostTime("first");
    timer.resetStartTime();
    timer.PrintCostTime(nullptr);
    const auto records = log.Records();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_THAT(records[0].text, testing::MatchesRegex(" first: spend time = [0-9]+ ms"));
    EXPECT_THAT(records[1].text, testing::MatchesRegex(" : spend time = [0-9]+ ms"));
    const auto ms = [](const std::string& text) { return std::stoi(text.substr(text.rfind("= ") + 2)); };
    EXPECT_GE(ms(records[0].text), 30);
    EXPECT_LT(ms(records[1].text), 30);
}

}  // namespace
