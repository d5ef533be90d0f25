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

// What a weak pointer is promoted to is counted apart; whichever goes first, the last one ends the object.
TEST(MetaData, LivesAsLongAsAnyPointer) {
    for (const bool promotedGoesFirst : {true, false}) {
        sp<MetaData> made = new MetaData;
        const wp<MetaData> watched = made;
        sp<MetaData> promoted = watched.promote(), copy = promoted;
        EXPECT_EQ(made->getStrongCount(), 3);
        (promotedGoesFirst ? promoted : made).clear();
        (promotedGoesFirst ? made : promoted).clear();
        EXPECT_EQ(copy->getStrongCount(), 1);
        EXPECT_NE(watched.promote(), nullptr);
        copy.clear();
        EXPECT_EQ(watched.promote(), nullptr);
    }
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
