#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "matroska/CodecPrivate.h"
#include "support/LogCapture.h"

namespace {

using android::AacConfigVerdict;
using testing_support::LogCapture;
using testing_support::LogRecord;

TEST(AacSpecificConfig, BytesVerdictsAndLines) {
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    const struct {
        const char* codecId;
        double frequency;
        uint32_t channels;
        int bytes;  // both as one number; -1: untouched
        std::string line;
    } rows[] = {
        {"A_AAC/MPEG4/LC", 44100, 2, 0x1210, "Make codec info 0x12, 0x10"},
        {"a_aac/mpeg4/lc", 48000, 6, 0x11B0, "Make codec info 0x11, 0xb0"},
        {"A_AAC/MPEG2/LC", 8000.9, 1, 0x1588, "Make codec info 0x15, 0x88"},
        // SBR is written as the object type of LTP.
        {"A_AAC/MPEG2/LC/SBR", 24000, 2, 0x2310, "Make codec info 0x23, 0x10"},
        {"A_AAC/MPEG4/LC/SBR", 96000, 1, 0x2008, "Make codec info 0x20, 0x8"},
        {"A_AAC/MPEG4/LTP", 48000, 1, 0x2188, "Make codec info 0x21, 0x88"},
        // Channel counts keep their low five bits.
        {"A_AAC/MPEG4/LC", 96000, 33, 0x1008, "Make codec info 0x10, 0x8"},
        {"A_AAC", 44100, 2, -1, "Unspport AAC: No profile"},
        {"a_aac", 1, 2, -1, "Unspport AAC: No profile"},
        // The frequency is judged before the profile.
        {"A_AAC/MPEG4/MAIN", 7350, 2, -1, "Unsupport AAC freq"},
        {"A_AAC/MPEG4/LC", 4294967295.0, 2, -1, "Unsupport AAC freq"},
        {"A_AAC/MPEG4/LC", 1e300, 2, -1, "Unsupport AAC freq"},
        {"A_AAC/MPEG4/LC", -44100, 2, -1, "Unsupport AAC freq"},
        {"A_AAC/MPEG4/LC", kNaN, 2, -1, "Unsupport AAC freq"},
        {"A_AAC/MPEG4/MAIN", 44100, 2, -1, "Unsupport AAC Codec profile A_AAC/MPEG4/MAIN"},
        {"A_AAC/MPEG2/LTP", 44100, 2, -1, "Unsupport AAC Codec profile A_AAC/MPEG2/LTP"},
        {"A_AAC/MPEG4/LC ", 44100, 2, -1, "Unsupport AAC Codec profile A_AAC/MPEG4/LC "},
    };
    for (const auto& row : rows) {
        const AacConfigVerdict verdict = row.bytes >= 0 ? AacConfigVerdict::kOk
                                         : row.line == "Unspport AAC: No profile"
                                             ? AacConfigVerdict::kNoProfile
                                         : row.line == "Unsupport AAC freq" ? AacConfigVerdict::kBadFrequency
                                                                            : AacConfigVerdict::kBadProfile;
        const int priority = row.bytes >= 0                            ? ANDROID_LOG_DEBUG
                             : verdict == AacConfigVerdict::kNoProfile ? ANDROID_LOG_WARN
                                                                       : ANDROID_LOG_ERROR;
        uint8_t out[2] = {0xEE, 0xEE};
        LogCapture log;
        EXPECT_EQ(android::MakeAacSpecificConfig(row.codecId, row.frequency, row.channels, out), verdict)
            << row.codecId << " at " << row.frequency;
        EXPECT_EQ(out[0] << 8 | out[1], row.bytes < 0 ? 0xEEEE : row.bytes) << row.codecId;
        EXPECT_THAT(log.Records(),
                    testing::ElementsAre(LogRecord{priority, "MatroskaExtExtractor", row.line}));
    }
}

TEST(AacSpecificConfig, EachFrequencyHasItsIndex) {
    int index = 0;
    for (const int frequency :
         {96000, 88200, 64000, 48000, 44100, 32000, 24000, 22050, 16000, 12000, 11025, 8000}) {
        uint8_t out[2];
        LogCapture quiet;
        EXPECT_EQ(AacConfigVerdict::kOk, android::MakeAacSpecificConfig("A_AAC/MPEG4/LC", frequency, 2, out));
        EXPECT_EQ(0x1010 | index++ << 7, out[0] << 8 | out[1]) << frequency;
    }
}

}  // namespace
