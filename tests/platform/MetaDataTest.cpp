#include <gtest/gtest.h>

#include <string.h>

#include <map>
#include <random>
#include <string>
#include <vector>

#include <media/stagefright/MetaData.h>

#include "support/LogCapture.h"

namespace android {
namespace {

std::string BytesAt(const MetaData& meta, uint32_t key, uint32_t* type) {
    const void* data = nullptr;
    size_t size = 0;
    if (!meta.findData(key, type, &data, &size)) return "(missing)";
    return std::string(static_cast<const char*>(data), size);
}

TEST(MetaData, GivesBackWhatWasStored) {
    sp<MetaData> meta = new MetaData;
    meta->setCString('cstr', "text");
    meta->setInt32('in32', INT32_MIN);
    meta->setInt64('in64', INT64_MIN);
    meta->setFloat('floa', -0.5f);
    meta->setPointer('ptr ', meta.get());
    meta->setRect('rect', -1, 2, -3, 4);

    const char* text = nullptr;
    int32_t i32 = 0;
    int64_t i64 = 0;
    float real = 0;
    void* pointer = nullptr;
    int32_t left = 0, top = 0, right = 0, bottom = 0;
    EXPECT_TRUE(meta->findCString('cstr', &text));
    EXPECT_TRUE(meta->findInt32('in32', &i32));
    EXPECT_TRUE(meta->findInt64('in64', &i64));
    EXPECT_TRUE(meta->findFloat('floa', &real));
    EXPECT_TRUE(meta->findPointer('ptr ', &pointer));
    EXPECT_TRUE(meta->findRect('rect', &left, &top, &right, &bottom));
    EXPECT_STREQ(text, "text");
    EXPECT_EQ(i32, INT32_MIN);
    EXPECT_EQ(i64, INT64_MIN);
    EXPECT_EQ(real, -0.5f);
    EXPECT_EQ(pointer, meta.get());
    EXPECT_EQ(std::vector<int32_t>({left, top, right, bottom}), std::vector<int32_t>({-1, 2, -3, 4}));
}

TEST(MetaData, AgreesWithAMapOverManyChanges) {
    std::mt19937 random(1);
    sp<MetaData> meta = new MetaData;
    std::map<uint32_t, std::string> expected;
    for (int step = 0; step < 20000; ++step) {
        const uint32_t key = random() % 40;
        const uint32_t action = random() % 1000;
        if (action == 0) {
            meta->clear();
            expected.clear();
        } else if (action < 300) {
            ASSERT_EQ(meta->remove(key), expected.erase(key) == 1);
        } else {
            const std::string bytes(random() % 30, static_cast<char>('a' + step % 26));
            ASSERT_EQ(meta->setData(key, 7, bytes.data(), bytes.size()), expected.count(key) == 1);
            expected[key] = bytes;
        }
        for (uint32_t check = key; check < 40; check += 7) {
            uint32_t type;
            const auto found = expected.find(check);
            ASSERT_EQ(BytesAt(*meta, check, &type), found == expected.end() ? "(missing)" : found->second);
        }
    }
}

TEST(MetaDataDeathTest, AbortsOnAValueOfTheWrongSize) {
    sp<MetaData> meta = new MetaData;
    meta->setData('key ', MetaData::TYPE_INT32, "12345678", 8);
    meta->setData('rect', MetaData::TYPE_RECT, "12345678", 8);
    int32_t value;
    EXPECT_DEATH(meta->findInt32('key ', &value), "failed: 8 vs. 4");
    EXPECT_DEATH(meta->findRect('rect', &value, &value, &value, &value), "failed: 8 vs. 16");
}

TEST(MetaData, DumpsFromTheHighestKeyDown) {
    sp<MetaData> meta = new MetaData;
    meta->setInt32(kKeyWidth, 5);
    meta->setInt64(kKeyTime, -6);
    meta->setCString(kKeyMIMEType, "video/avc");
    meta->setData(kKeyAVCC, kTypeAVCC, "abc", 3);
    testing_support::LogCapture log;
    meta->dumpToLog();
    std::vector<std::string> lines;
    for (const testing_support::LogRecord& record : log.WithTag("MetaData")) {
        EXPECT_EQ(record.priority, ANDROID_LOG_INFO);
        lines.push_back(record.text);
    }
    EXPECT_EQ(lines, (std::vector<std::string>{"widt: (int32_t) 5", "time: (int64_t) -6",
                                               "mime: (char *) video/avc", "avcc: (type avcc) 3 bytes"}));
}

}  // namespace
}  // namespace android
