#include "utils/CodecTags.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

// Both headers, as a device build may have them: they declare some of the same variables.
#include <media/stagefright/MediaDefs.h>
#include "utils/MimeTypes.h"
#include "utils/OptionalCodecLibrary.h"
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

TEST(GetMimeType, FindsTagsOfBothKinds) {
    const struct {
        unsigned tag;
        const char* mime;
    } rows[] = {
        {0x44494220, "video/raw"},  // " BID"
        {Tag("avc1"), "video/avc"},
        {Tag("HeVc"), "video/hevc"},
        {Tag("wmv2"), "video/mixer"},
        {Tag("WMV3"), "video/wmv"},
        {Tag("DIV3"), "video/mixer"},
        {Tag("DIV2"), "video/mp4v-es"},
        {Tag("DX50"), "video/ffmpeg"},
        {Tag("xvid"), "video/mp4v-es"},
        {Tag("H263"), "video/3gpp"},
        {Tag("mpg2"), "video/mpeg2"},
        {Tag("14_4"), "audio/realaudio"},
        {Tag("raac"), "audio/mp4a-latm"},
        {Tag("VP-9"), "video/x-vnd.on2.vp9"},
        {Tag("TSCC"), "video/ffmpeg"},
        {0x1, "audio/raw"},
        {0x3, "audio/lpcm"},
        {0x50, "audio/mpeg"},
        {0x55, "audio/mpeg"},
        {0x5346, "audio/adpcm"},
        {0x5000, "audio/flac"},
        {0x5001, "audio/vorbis"},
        {0xF1AC, "audio/flac"},
    };
    LogCapture quiet;
    for (const auto& row : rows) EXPECT_STREQ(android::GetMimeType(row.tag), row.mime) << std::hex << row.tag;
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

TEST(MimeTypes, NamesThatShareATextOrAreSpeltOddly) {
    EXPECT_STREQ(android::MEDIA_MIMETYPE_CONTAINER_EXI_AIFF, "audio/ext-aiff");
    EXPECT_STREQ(android::MEDIA_MIMETYPE_CONTAINER_MATROSKA_EXT, "video/x-matroska_ext");
    EXPECT_STREQ(android::MEDIA_MIMETYPE_CONTAINER_DIVX, android::MEDIA_MIMETYPE_VIDEO_DIVX);
    EXPECT_STREQ(android::MEDIA_MIMETYPE_CONTAINER_FFMPEG, android::MEDIA_MIMETYPE_VIDEO_FFMPEG);
    EXPECT_STREQ(android::MEDIA_MIMETYPE_CONTAINER_HEVC, android::MEDIA_MIMETYPE_VIDEO_HEVC);
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
