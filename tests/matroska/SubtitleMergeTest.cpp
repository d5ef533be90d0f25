#include "matroska/SubtitleMerge.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

using namespace std::string_literals;

TEST(FindEighthComma, CountsFromTheSecondByte) {
    const struct {
        std::string text;
        long comma;
    } rows[] = {
        {"0,0,Default,,0,0,0,,Hello", 19},
        {"0,0,Default,,0,0,0,,Hello, world,,", 19},
        {"x,,,,,,,,", 8},
        {",,,,,,,,", -1},  // the first one is not seen
        {",,,,,,,,,", 8},
        {"0,0,Default,,0,0,0", -1},
        {"x,,,,,,,", -1},
        {"1,\0,\0\0,a,b,c,d,e,f"s, 16},
        {"Plain text", -1},
        {",", -1},
        {"", -1},
    };
    for (const auto& row : rows) {
        const std::unique_ptr<char[]> exact(new char[row.text.size()]);
        row.text.copy(exact.get(), row.text.size());
        EXPECT_EQ(android::FindEighthComma(exact.get(), row.text.size()), row.comma) << row.text;
    }
    EXPECT_EQ(android::FindEighthComma(nullptr, 0), -1);
}

TEST(MergeEvents, NewEventThenTheLastOnesText) {
    const struct {
        std::string newEvent;
        std::string last;
        std::string merged;
    } rows[] = {
        {"1,0,Default,,0,0,0,,World", "0,0,Default,,0,0,0,,Hello", "1,0,Default,,0,0,0,,World\nHello"},
        {"no commas\0"s, "0,0,Default,,0,0,0,,a,b\0c"s, "no commas\0\na,b\0c"s},
        {"", "0,0,Default,,0,0,0,,Hello", "\nHello"},
        {"World", "x,,,,,,,,", "World\n"},
    };
    for (const auto& row : rows) {
        const size_t comma = static_cast<size_t>(android::FindEighthComma(row.last.data(), row.last.size()));
        const size_t size = android::MergedSize(row.newEvent.size(), row.last.size(), comma);
        ASSERT_EQ(size, row.merged.size()) << row.merged;
        const std::unique_ptr<uint8_t[]> out(new uint8_t[size]);
        android::MergeEvents(out.get(), reinterpret_cast<const uint8_t*>(row.newEvent.data()),
                             row.newEvent.size(), reinterpret_cast<const uint8_t*>(row.last.data()),
                             row.last.size(), comma);
        EXPECT_EQ(std::string(out.get(), out.get() + size), row.merged);
    }
}

}  // namespace
