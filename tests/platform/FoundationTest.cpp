// AString, ABuffer, AMessage and the assertion texts.
#define LOG_TAG "FoundationTest"

#include <gtest/gtest.h>

#include <limits.h>
#include <string.h>

#include <string>

#include <utils/String8.h>

#include <media/stagefright/MediaErrors.h>
#include <media/stagefright/foundation/ABuffer.h>
#include <media/stagefright/foundation/ADebug.h>
#include <media/stagefright/foundation/AMessage.h>
#include <media/stagefright/foundation/AString.h>

#include "support/LogCapture.h"

namespace android {
namespace {

TEST(ABuffer, RangeLiesInTheCapacity) {
    uint8_t bytes[10];
    sp<ABuffer> buffer = new ABuffer(bytes, sizeof(bytes));
    buffer->setRange(10, 0);
    buffer->setRange(3, 7);
    EXPECT_EQ(buffer->base(), bytes);
    EXPECT_EQ(buffer->data(), bytes + 3);
    EXPECT_EQ(buffer->size(), 7u);
    EXPECT_EQ(buffer->capacity(), 10u);
    EXPECT_DEATH(buffer->setRange(11, 0), "failed: 11 vs. 10");
    EXPECT_DEATH(buffer->setRange(4, 7), "failed: 7 vs. 6");
    EXPECT_DEATH(buffer->setRange(1, SIZE_MAX), "CHECK_LE");
    EXPECT_EQ(buffer->meta(), buffer->meta());
    sp<ABuffer> copy = ABuffer::CreateAsCopy("abc", 3);
    EXPECT_EQ(memcmp(copy->data(), "abc", 3), 0);
}

// The text of a failed assertion is part of the interface: tools and bug reports match it.
TEST(CheckDeathTest, Texts) {
    const unsigned three = 3;
    const int* const none = nullptr;
    EXPECT_DEATH(CHECK(none != NULL), "FoundationTest\\.cpp:[0-9]+ CHECK\\(none != NULL\\) failed\\.");
    EXPECT_DEATH(CHECK_EQ(three, 4u),
                 "FoundationTest\\.cpp:[0-9]+ CHECK_EQ\\( three,4u\\) failed: 3 vs\\. 4");
    EXPECT_DEATH(CHECK_LT(uint8_t{9}, uint8_t{9}), "failed: 9 vs\\. 9");
    EXPECT_DEATH(TRESPASS(), "FoundationTest\\.cpp:[0-9]+ Should not be here\\.");
    // And none of these.
    CHECK(none == NULL);
    CHECK_LE(three, 3u);
    CHECK_GE(three, 3u);
    CHECK_GT(three, 2u);
}

}  // namespace
}  // namespace android
