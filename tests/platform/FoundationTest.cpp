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

std::string Bytes(const AString& text) {
    return std::string(text.c_str(), text.size());
}

TEST(AString, EmbeddedZerosCountExceptForCStringFunctions) {
    const AString plain("ab");
    const AString longer("ab\0cd", 5);
    EXPECT_EQ(longer.size(), 5u);
    EXPECT_TRUE(plain != longer);
    EXPECT_EQ(plain.compare(longer), 0);
    EXPECT_FALSE(plain < longer || plain > longer);
    EXPECT_NE(plain.hash(), longer.hash());
    EXPECT_EQ(longer.find("cd"), -1);
    EXPECT_EQ(longer.find("cd", 3), 3);
    EXPECT_FALSE(longer.startsWith("ab\xff"));
    EXPECT_TRUE(longer.endsWith("CD") == false && longer.endsWithIgnoreCase("CD"));
    EXPECT_EQ(Bytes(AString(String8("xyz"))), "xyz");
    EXPECT_EQ(Bytes(AString(longer, 1, 3)), std::string("b\0c", 3));
}

TEST(AString, NumbersBecomeText) {
    struct Case {
        AString text;
        std::string expected;
    };
    const auto of = [](auto value) {
        AString text("=");
        text.append(value);
        return text;
    };
    const Case cases[] = {
        {of('c'), "=c"},
        {of(uint8_t{200}), "=200"},
        {of(true), "=1"},
        {of(INT_MIN), "=-2147483648"},
        {of(UINT64_MAX), "=18446744073709551615"},
        {of(1.5f), "=1.500000"},
        {of(-1234567.25), "=-1234567.250000"},  // the longest that fits
        {StringPrintf("%s %d", std::string(300, 'x').c_str(), 5), std::string(300, 'x') + " 5"},
    };
    for (const Case& c : cases) EXPECT_EQ(Bytes(c.text), c.expected);
    AString text;
    EXPECT_DEATH(text.append(-12345678.25), "CHECK");
}

TEST(AString, EditingStaysWithinBounds) {
    AString text(" \tABc \n");
    text.trim();
    EXPECT_STREQ(text.c_str(), "ABc");
    text.tolower();
    text.insert("12", 2, 3);
    text.insert("0", 1, 0);
    EXPECT_STREQ(text.c_str(), "0abc12");
    text.erase(1, 3);
    text.append(text);
    EXPECT_STREQ(text.c_str(), "012012");
    text.erase(6, 0);
    EXPECT_DEATH(text.erase(6, 1), "CHECK_LE");
    EXPECT_DEATH(text.insert("x", 1, 7), "CHECK_LE");
    EXPECT_DEATH(text.setTo(text, 0, 1), "CHECK");
    EXPECT_DEATH(text.append(text, 2, SIZE_MAX), "CHECK_LE");
    AString blank("  ");
    blank.trim();
    EXPECT_TRUE(blank.empty());
    EXPECT_STREQ(blank.c_str(), "");
}

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

TEST(AMessage, ValuesHaveATypeAndANameOfTheirOwn) {
    sp<AMessage> message = new AMessage;
    message->setInt32("number", 5);
    message->setString("text", "a\0b", 3);
    message->setString("number", "five");
    message->setDouble("real", 0.25);
    int32_t number = 7;
    double real = 0;
    AString text;
    EXPECT_FALSE(message->findInt32("number", &number)) << "it is a text now";
    EXPECT_FALSE(message->findInt32("Number", &number));
    EXPECT_EQ(number, 7);
    EXPECT_TRUE(message->findDouble("real", &real));
    EXPECT_EQ(real, 0.25);
    EXPECT_TRUE(message->findString("text", &text));
    EXPECT_EQ(text.size(), 3u);
    EXPECT_TRUE(message->findString("number", &text));
    message->setString("number", text);
    EXPECT_EQ(message->countEntries(), 3u);

    for (int i = 3; i < 64; ++i) message->setInt64(std::to_string(i).c_str(), i);
    message->setSize("real", 1);
    EXPECT_DEATH(message->setInt32("one too many", 1), "CHECK");
    message->clear();
    EXPECT_FALSE(message->contains("real"));
}

// The text of a failed assertion is part of the interface: tools and bug reports match it.
TEST(CheckDeathTest, Texts) {
    const unsigned three = 3;
    const char* const name = "name";
    const int* const none = nullptr;
    EXPECT_DEATH(CHECK(none != NULL), "FoundationTest\\.cpp:[0-9]+ CHECK\\(none != NULL\\) failed\\.");
    EXPECT_DEATH(CHECK_EQ(three, 4u),
                 "FoundationTest\\.cpp:[0-9]+ CHECK_EQ\\( three,4u\\) failed: 3 vs\\. 4");
    EXPECT_DEATH(CHECK_NE(OK, static_cast<status_t>(0)), "CHECK_NE\\( OK,.*failed: 0 vs\\. 0");
    EXPECT_DEATH(CHECK_LT(uint8_t{9}, uint8_t{9}), "failed: 9 vs\\. 9");
    EXPECT_DEATH(CHECK_EQ('a', 'b'), "failed: a vs\\. b");
    EXPECT_DEATH(CHECK_EQ(name, static_cast<const char*>(nullptr) == name ? name : "other"),
                 "failed: name vs\\. other");
    EXPECT_DEATH(TRESPASS(), "FoundationTest\\.cpp:[0-9]+ Should not be here\\.");
    // And none of these.
    CHECK(none == NULL);
    CHECK_LE(three, 3u);
    CHECK_GE(three, 3u);
    CHECK_GT(three, 2u);
}

TEST(Check, StatusNames) {
    EXPECT_STREQ(asString(ERROR_END_OF_STREAM), "ERROR_END_OF_STREAM");
    EXPECT_STREQ(asString(-1006), "-1006");
    EXPECT_EQ(ERROR_END_OF_STREAM, -1011);
    EXPECT_TRUE(isCryptoError(ERROR_DRM_RESOURCE_BUSY));
    EXPECT_FALSE(isCryptoError(ERROR_DRM_RESOURCE_BUSY - 1));
    EXPECT_FALSE(isCryptoError(INFO_OUTPUT_BUFFERS_CHANGED));
}

}  // namespace
}  // namespace android
