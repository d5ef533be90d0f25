#include "utils/CodecTags.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

// Both headers, as a device build may have them: they declare some of the same variables.
#include <media/stagefright/MediaDefs.h>
#include "utils/MimeTypes.h"
#include "utils/OptionalCodecLibrary.h"
#include "support/Golden.h"
#include "support/LogCapture.h"

namespace {

using android::OptionalCodecLibrary;
using testing::ElementsAre;
using testing::StartsWith;
using testing_support::LogCapture;
using testing_support::LogRecord;

// The number of a FourCC, written independently of the code's own.
unsigned Tag(const char* text) {
    unsigned tag = 0;
    for (int i = 3; i >= 0; --i) tag = tag * 256 + static_cast<unsigned char>(text[i]);
    return tag;
}

// Every tag that has a type, FourCCs also in lower case, as a kept text.
TEST(GetMimeType, FindsTagsOfBothKinds) {
    const char* const fourCcs[] = {" BID", "H264", "AVC1", "HVC1", "HEV1", "HEVC", "HVCC", "HM10", "WMV1",
                                   "WMV2", "WMV3", "WMVA", "WVC1", "DIVX", "DX50", "DIV4", "DIV3", "DIV2",
                                   "FMP4", "MP4V", "H263", "XVID", "FLV1", "MP42", "MP43", "VP62", "FLV4",
                                   "MPEG", "MPG1", "MPG2", "RV10", "RV20", "RV30", "RV40", "COOK", "ATRC",
                                   "SIPR", "DNET", "14_4", "28_8", "RAAC", "RACP", "VP-8", "VP-9", "TSCC"};
    const unsigned formatTags[] = {0x55, 0x50, 0x161, 0x162, 0x163,  0xFF,   0x2000, 0x2001, 0xA0,
                                   0x1,  0x2,  0x3,   0x6,   0x7,    0x10,   0x11,   0x20,   0x103,
                                   0x61, 0x62, 0x69,  0x200, 0x5346, 0x5000, 0x5001, 0xF1AC};
    const auto typeOf = [](unsigned tag) {
        const char* mime = android::GetMimeType(tag);
        return std::string(mime != nullptr ? mime : "none") + "\n";
    };
    LogCapture quiet;
    std::string text;
    for (const char* fourCc : fourCcs) {
        std::string lower;
        for (const char* c = fourCc; *c != 0; ++c) lower += static_cast<char>(tolower(*c));
        text += fourCc + (" " + typeOf(Tag(fourCc)));
        EXPECT_EQ(typeOf(Tag(fourCc)), typeOf(Tag(lower.c_str()))) << fourCc;
    }
    for (const unsigned tag : formatTags) text += std::to_string(tag) + " " + typeOf(tag);
    testing_support::ExpectGolden("utils/golden/codec-tags", text);
}

TEST(GetMimeType, LogsWhatItLooksForAndWhatItDoesNotFind) {
    const struct {
        unsigned tag;
        const char* asked;
        const char* missed;
    } rows[] = {
        {0, "GetMimeType : fourcc 0x0", "GetMimeType: not find Mime! 0x0, "},
        // Format tags end at 65534 and are no letters, FourCCs are turned to upper case.
        {0x6161, "GetMimeType : fourcc 0x6161", "GetMimeType: not find Mime! 0x6161, aa"},
        {0xFFFE, "GetMimeType : fourcc 0xfffe", "GetMimeType: not find Mime! 0xfffe, \xFE\xFF"},
        {0x10061, "GetMimeType : fourcc 0x10061", "GetMimeType: not find Mime! 0x10041, A"},
        {Tag("az{`"), "GetMimeType : fourcc 0x607b7a61", "GetMimeType: not find Mime! 0x607b5a41, AZ{`"},
        {0x10055, "GetMimeType : fourcc 0x10055", "GetMimeType: not find Mime! 0x10055, U"},
    };
    for (const auto& row : rows) {
        LogCapture log;
        EXPECT_EQ(android::GetMimeType(row.tag), nullptr) << std::hex << row.tag;
        EXPECT_THAT(log.Records(), ElementsAre(LogRecord{ANDROID_LOG_INFO, "Utils", row.asked},
                                               LogRecord{ANDROID_LOG_DEBUG, "Utils", row.missed}));
    }
}

TEST(IsNeedExtra, ComparesTheWholeTextAndItsCase) {
    for (const char* mime :
         {"video/mixer", "video/realvideo", "audio/realaudio", "audio/ape", "audio/wma", "audio/adpcm"}) {
        EXPECT_TRUE(android::isNeedExtra(mime)) << mime;
    }
    for (const char* mime : {"", "video/avc", "Video/Mixer", "video/mix", "video/mixer2", "audio/x-ape"}) {
        EXPECT_FALSE(android::isNeedExtra(mime)) << mime;
    }
    EXPECT_FALSE(android::isNeedExtra(nullptr));
}

// Puts the device's own path back in the end.
class CodecLibrary : public testing::Test {
  protected:
    ~CodecLibrary() override { OptionalCodecLibrary::Installed().setPath(mDevicePath); }

    void Install(const char* path) { OptionalCodecLibrary::Installed().setPath(path); }

    const char* mDevicePath = OptionalCodecLibrary::Installed().path();
};

TEST_F(CodecLibrary, AnswersWhenInstalled) {
    Install(CODEC_IDS_LIBRARY);
    LogCapture log;
    EXPECT_EQ(android::getCodecIDFromFourCC(Tag("XVID")), 1000 + 'X');
    EXPECT_EQ(android::getCodecIDFromFourCC(0), 1000);
    EXPECT_THAT(log.Records(), ElementsAre());
}

TEST_F(CodecLibrary, MissingLibraryIsToldInTwoLines) {
    EXPECT_STREQ(mDevicePath, "/system/lib/libffmpeg_utils.so");
    LogCapture log;
    EXPECT_EQ(android::getCodecIDFromFourCC(0xFFFFFFFF), -1);
    const auto records = log.Records();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0].priority, ANDROID_LOG_INFO);
    EXPECT_EQ(records[0].tag, "Utils");
    EXPECT_THAT(records[0].text, StartsWith("Failed to load libffmpeg_utils.so, dlerror: /system/lib/"));
    EXPECT_EQ(records[1], (LogRecord{ANDROID_LOG_VERBOSE, "Utils", "fourcc:4294967295"}));
}

TEST_F(CodecLibrary, MissingFunctionIsToldInTwoLines) {
    Install(NO_CODEC_IDS_LIBRARY);
    LogCapture log;
    EXPECT_EQ(android::getCodecIDFromFourCC(7), -1);
    const auto records = log.Records();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0].priority, ANDROID_LOG_INFO);
    EXPECT_THAT(records[0].text, StartsWith("Failed to find symbol, dlerror: "));
    EXPECT_THAT(records[0].text, testing::HasSubstr("FfmpegGetCodecIDFromFourCC"));
    EXPECT_EQ(records[1], (LogRecord{ANDROID_LOG_VERBOSE, "Utils", "fourcc:7"}));
}

}  // namespace
