#include <gtest/gtest.h>

#include <errno.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "include/avc_utils.h"
#include <media/stagefright/MetaData.h>

#include "support/LogCapture.h"

namespace android {
namespace {

using Bytes = std::vector<uint8_t>;

Bytes FromHex(const std::string& hex) {
    Bytes bytes;
    for (size_t i = 0; i + 1 < hex.size(); i += 2) {
        bytes.push_back(static_cast<uint8_t>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

Bytes AnnexB(std::initializer_list<Bytes> nals) {
    Bytes stream;
    for (const Bytes& nal : nals) {
        stream.insert(stream.end(), {0, 0, 0, 1});
        stream.insert(stream.end(), nal.begin(), nal.end());
    }
    return stream;
}

sp<ABuffer> Buffer(const Bytes& bytes) {
    return ABuffer::CreateAsCopy(bytes.data(), bytes.size());
}

int32_t Int32(const sp<MetaData>& meta, uint32_t key) {
    int32_t value = -1;
    return meta->findInt32(key, &value) ? value : -1;
}

TEST(MakeAVCCodecSpecificData, SizesAndRatios) {
    struct Case {
        const char* why;
        Bytes sps;
        int32_t width, height, sarWidth, sarHeight;  // ratio -1: not set
    };
    const Case cases[] = {
        // As an encoder writes them.
        {"High 4:2:0, cropped", FromHex("6764000dacd941519e2223011000000300100000030320f1429960"), 322, 178,
         -1, -1},
        {"interlaced, 16:11", FromHex("6764001eacd940b424d8208000000300800000190f8a14cb"), 720, 576, 16, 11},
        {"High 4:2:2, cropped, 7:5",
         FromHex("677a001ebcd940a02fea2fff000700051000000300100000030320f162d960"), 638, 358, 7, 5},
        {"High 4:4:4 of odd size", FromHex("67f4000c919b282833d4760220000003002000000641e28532c0"), 319, 179,
         -1, -1},
        {"Baseline", FromHex("6742c00bd902c4ec0440000003004000000c83c50a92"), 176, 144, -1, -1},
        {"1080 lines", FromHex("67640028acd940780227e5c044000003000400000300c83c60c658"), 1920, 1080, -1, -1},
        {"interlaced, cropped", FromHex("6764001eacd940a063f36022000003000200000300643e28532c"), 640, 364, -1,
         -1},
    };
    const Bytes pps = FromHex("68ebe3cb22c0");
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        testing_support::LogCapture log;
        sp<MetaData> meta = MakeAVCCodecSpecificData(Buffer(AnnexB({{9, 0xf0}, c.sps, pps, {0x65, 1, 2}})));
        ASSERT_NE(meta, nullptr);
        EXPECT_EQ(Int32(meta, kKeyWidth), c.width);
        EXPECT_EQ(Int32(meta, kKeyHeight), c.height);
        EXPECT_EQ(Int32(meta, kKeySARWidth), c.sarWidth);
        EXPECT_EQ(Int32(meta, kKeySARHeight), c.sarHeight);
        EXPECT_FALSE(meta->hasData(kKeyDuration) || meta->hasData(kKeyMaxInputSize));
        ASSERT_EQ(log.Records().size(), 1u);
        EXPECT_EQ(log.WithTag("avc_utils").at(0).priority, ANDROID_LOG_INFO);
    }
}

TEST(MakeAVCCodecSpecificData, RecordHoldsTheFirstSets) {
    const Bytes sps = FromHex("6742c00bd902c4ec0440000003004000000c83c50a92");
    const Bytes other = FromHex("6764001eacd940b424d8208000000300800000190f8a14cb");
    // The sets in the wrong order, a second of each, zeros behind one.
    sp<MetaData> meta = MakeAVCCodecSpecificData(
        Buffer(AnnexB({{0x68, 0xcb, 0x83, 0, 0}, sps, other, {0x68, 1}, {0x65, 1}})));
    ASSERT_NE(meta, nullptr);
    Bytes expected = {1, 0x42, 0xc0, 0x0b, 0xfd, 0xe1, 0, static_cast<uint8_t>(sps.size())};
    expected.insert(expected.end(), sps.begin(), sps.end());
    expected.insert(expected.end(), {1, 0, 3, 0x68, 0xcb, 0x83});

    uint32_t type = 0;
    const void* data = nullptr;
    size_t size = 0;
    ASSERT_TRUE(meta->findData(kKeyAVCC, &type, &data, &size));
    EXPECT_EQ(type, static_cast<uint32_t>(kTypeAVCC));
    EXPECT_EQ(Bytes(static_cast<const uint8_t*>(data), static_cast<const uint8_t*>(data) + size), expected);
    const char* mime = nullptr;
    EXPECT_TRUE(meta->findCString(kKeyMIMEType, &mime));
    EXPECT_STREQ(mime, "video/avc");
}

TEST(MakeAVCCodecSpecificDataDeathTest, HalfAConfiguration) {
    const Bytes sps = FromHex("6742c00bd902c4ec0440000003004000000c83c50a92");
    EXPECT_EQ(MakeAVCCodecSpecificData(Buffer(AnnexB({{0x68, 0xcb}, {0x65, 1}}))), nullptr)
        << "no sequence set";
    EXPECT_EQ(MakeAVCCodecSpecificData(Buffer({})), nullptr);
    EXPECT_EQ(MakeAVCCodecSpecificData(Buffer({0, 0, 1})), nullptr);
    EXPECT_DEATH(MakeAVCCodecSpecificData(Buffer(AnnexB({sps}))), "CHECK\\(picParamSet != NULL\\) failed");
    for (size_t size : {1u, 3u, 5u, 8u}) {
        const Bytes cut(sps.begin(), sps.begin() + static_cast<ptrdiff_t>(size));
        EXPECT_DEATH(MakeAVCCodecSpecificData(Buffer(AnnexB({cut, {0x68, 1}}))), "BitReader\\.cpp.*CHECK_LE");
    }
}

}  // namespace
}  // namespace android
