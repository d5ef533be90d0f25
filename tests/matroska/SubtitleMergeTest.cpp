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

}  // namespace
