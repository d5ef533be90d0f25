// What the factory learns before it opens a file.
#include "matroska/MatroskaFixture.h"

#include <cstring>

namespace testing_support {
namespace {

TEST(Sniffer, TextsAndConfidences) {
    const Bytes magic = Hex("1A45DFA3");
    auto headerOf = [](const std::string& docType) { return Write({EbmlHeader(docType)}).bytes; };
    const struct {
        const char* name;
        Bytes bytes;
        bool found;
        uint32_t confidenceBits;
        const char* log;
    } rows[] = {
        {"nothing", {}, false, 0, nullptr},
        {"three bytes", Hex("1A45DF"), false, 0, nullptr},
        {"another magic", Hex("1A45DFA4 00000000"), false, 0, nullptr},
        {"only the magic", magic, true, 0x3F68F5C3, "[Sniffer 1329] not webm"},
        {"magic and damage", Concat({magic, Bytes(100)}), true, 0x3F68F5C3, "[Sniffer 1329] not webm"},
        {"matroska", headerOf("matroska"), true, 0x3F68F5C3, "[Sniffer 1329] not webm"},
        {"webm", headerOf("webm"), true, 0x3F000000, "[Sniffer 1326] webm"},
        {"webm, read version 3", Write({EbmlHeader("webm", 3)}).bytes, true, 0x3F000000,
         "[Sniffer 1326] webm"},
        {"WebM", headerOf("WebM"), true, 0x3F68F5C3, "[Sniffer 1329] not webm"},
        {"webm2", headerOf("webm2"), true, 0x3F68F5C3, "[Sniffer 1329] not webm"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        android::String8 mime("before");
        float confidence = -1;
        sp<android::AMessage> meta = new android::AMessage;
        const sp<android::AMessage> sameMeta = meta;
        LogCapture log;
        EXPECT_EQ(row.found, android::Sniffer(sp<android::DataSource>(new FaultySource(row.bytes)), &mime,
                                              &confidence, &meta));
        EXPECT_STREQ(row.found ? "video/x-matroska_ext" : "before", mime.string());
        uint32_t bits = 0;
        std::memcpy(&bits, &confidence, sizeof bits);
        if (row.found) {
            EXPECT_EQ(row.confidenceBits, bits);
            EXPECT_EQ((std::vector<LogRecord>{{ANDROID_LOG_DEBUG, kTag, row.log}}), log.WithTag(kTag));
        } else {
            EXPECT_EQ(-1, confidence);
            EXPECT_TRUE(log.WithTag(kTag).empty());
        }
        EXPECT_EQ(sameMeta.get(), meta.get());
    }
}

TEST(Sniffer, AFailingOrShortSourceIsNotClaimed) {
    const Bytes bytes = Write({EbmlHeader("webm")}).bytes;
    Faults failing, shortRead;
    failing.errorAtCall = 0;
    shortRead.maxBytesPerCall = 3;
    for (const Faults& faults : {failing, shortRead}) {
        android::String8 mime;
        float confidence = -1;
        sp<android::AMessage> meta;
        EXPECT_FALSE(android::Sniffer(sp<android::DataSource>(new FaultySource(bytes, faults)), &mime,
                                      &confidence, &meta));
        EXPECT_EQ(-1, confidence);
    }
}

}  // namespace
}  // namespace testing_support
