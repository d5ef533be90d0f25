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

struct DumpRow {
    size_t size;
    std::vector<std::string> lines;
};

TEST(PrintContent, LinesByLength) {
    const DumpRow rows[] = {
        {0, {"in iLen = 0", "in mInputBuffer Len = 0"}},
        {6, {"in iLen = 6", "in mInputBuffer Len = 6"}},
        {7, {"in iLen = 7", "in: 0000: 00 01 02 03 04 05"}},
        {15, {"in iLen = 15", "in: 0000: 00 01 02 03 04 05"}},
        {16, {"in iLen = 16", "in: 0000: 00 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f"}},
        {17,
         {"in iLen = 17", "in: 0000: 00 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f",
          "in The last Line:", "in: 0001: 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10"}},
        {100,
         {"in iLen = 100", "in: 0000: 00 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f",
          "in: 0010: 10 11 12 13 14 15 16 17 18 19 1a 1b 1c 1d 1e 1f",
          "in: 0020: 20 21 22 23 24 25 26 27 28 29 2a 2b 2c 2d 2e 2f",
          "in: 0030: 30 31 32 33 34 35 36 37 38 39 3a 3b 3c 3d 3e 3f",
          "in: 0040: 40 41 42 43 44 45 46 47 48 49 4a 4b 4c 4d 4e 4f",
          "in The last Line:", "in: 0054: 54 55 56 57 58 59 5a 5b 5c 5d 5e 5f 60 61 62 63"}},
    };
    for (const DumpRow& row : rows) {
        const std::vector<uint8_t> bytes = Counting(row.size);
        LogCapture log;
        android::PrintContent("in", bytes.data(), static_cast<int>(bytes.size()));
        EXPECT_EQ(DebugTexts(log), row.lines) << row.size;
    }
    LogCapture log;
    android::PrintContent("in", nullptr, -40);
    EXPECT_EQ(DebugTexts(log), (std::vector<std::string>{"in iLen = -40", "in mInputBuffer Len = -40"}));
}

TEST(Hexdump, LinesOfSixteenEightFourAndOne) {
    const DumpRow rows[] = {
        {0, {}},
        {13, {"x: (0000/0013) 00 01 02 03 04 05 06 07", "x: (0008/0013) 08 09 0a 0b", "x: (0012/0013) 0c "}},
        {30,
         {"x: (0000/0030) 00 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f",
          "x: (0016/0030) 10 11 12 13 14 15 16 17", "x: (0024/0030) 18 19 1a 1b", "x: (0028/0030) 1c ",
          "x: (0029/0030) 1d "}},
        {70,
         {"x: (0000/0070) 00 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f",
          "x: (0016/0070) 10 11 12 13 14 15 16 17 18 19 1a 1b 1c 1d 1e 1f",
          "x: (0032/0070) 20 21 22 23 24 25 26 27 28 29 2a 2b 2c 2d 2e 2f",
          "x: (0048/0070) 30 31 32 33 34 35 36 37 38 39 3a 3b 3c 3d 3e 3f"}},
    };
    for (const DumpRow& row : rows) {
        const std::vector<uint8_t> bytes = Counting(row.size);
        char prefix[] = "x";
        LogCapture log;
        android::hexdump(prefix, bytes.data(), static_cast<unsigned>(bytes.size()));
        EXPECT_EQ(DebugTexts(log), row.lines) << row.size;
    }
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
