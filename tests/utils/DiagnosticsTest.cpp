#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <numeric>
#include <string>
#include <vector>

#include "utils/DebugAids.h"
#include "utils/HexDump.h"
#include "support/Golden.h"
#include "support/LogCapture.h"

namespace {

using testing_support::LogCapture;
using testing_support::LogRecord;

// Bytes that count up from 0.
std::vector<uint8_t> Counting(size_t size) {
    std::vector<uint8_t> bytes(size);
    std::iota(bytes.begin(), bytes.end(), uint8_t{0});
    return bytes;
}

// The texts; whatever else a record says has to be debug and "Utils".
std::vector<std::string> DebugTexts(const LogCapture& log) {
    std::vector<std::string> texts;
    for (const LogRecord& record : log.Records()) {
        EXPECT_EQ(record.priority, ANDROID_LOG_DEBUG);
        EXPECT_EQ(record.tag, "Utils");
        texts.push_back(record.text);
    }
    return texts;
}

// What each length is written as, for both dumps, as a kept text.
TEST(HexDump, LinesByLength) {
    std::string text;
    for (const size_t size : {0u, 6u, 7u, 13u, 15u, 16u, 17u, 30u, 70u, 100u}) {
        const std::vector<uint8_t> bytes = Counting(size);
        char prefix[] = "hexdump";
        LogCapture log;
        android::PrintContent("PrintContent", bytes.data(), static_cast<int>(size));
        android::hexdump(prefix, bytes.data(), static_cast<unsigned>(size));
        for (const std::string& line : DebugTexts(log)) text += std::to_string(size) + "| " + line + "|\n";
    }
    LogCapture log;
    android::PrintContent("PrintContent", nullptr, -40);
    for (const std::string& line : DebugTexts(log)) text += "-40| " + line + "|\n";
    testing_support::ExpectGolden("utils/golden/dumps", text);
}

TEST(DumpFrame, AppendsAndToleratesAPathThatCannotBeOpened) {
    const std::string path = testing::TempDir() + "frame_dump_test.bin";
    std::remove(path.c_str());
    android::dumpFrame(path.c_str(), "one", 3);
    android::dumpFrame(path.c_str(), "ignored", 0);
    android::dumpFrame(path.c_str(), "ignored", -1);
    android::dumpFrame(path.c_str(), "two!", 4);
    std::ifstream file(path, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), "onetwo!");
    std::remove(path.c_str());

    android::dumpFrame((testing::TempDir() + "no such folder/frame").c_str(), "x", 1);
}

#ifndef __arm__  // the packaged library's stack capture is broken there: it dies of an illegal instruction
TEST(ShowBacktrace, LogsFramesOfThisProgram) {
    LogCapture log;
    android::showBacktrace();
    const auto records = log.WithTag("showBacktrace");
    ASSERT_GE(records.size(), 3u);
    for (const LogRecord& record : records) EXPECT_EQ(record.priority, ANDROID_LOG_DEBUG);
    EXPECT_THAT(records[0].text, testing::StartsWith("#00 pc "));
    EXPECT_THAT(records,
                testing::Contains(testing::Field(&LogRecord::text, testing::HasSubstr("utils_tests"))));
}
#endif

}  // namespace
