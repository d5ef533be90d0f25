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

// Most significant bit first, for sets that no encoder at hand writes.
class Bits {
  public:
    Bits& u(unsigned count, uint32_t value) {
        for (unsigned i = count; i > 0; --i) {
            if (mCount++ % 8 == 0) mBytes.push_back(0);
            mBytes.back() |= static_cast<uint8_t>(((value >> (i - 1)) & 1) << (7 - (mCount - 1) % 8));
        }
        return *this;
    }
    Bits& ue(uint32_t value) {
        unsigned length = 0;
        while (((value + 1) >> (length + 1)) != 0) ++length;
        return u(length, 0).u(length + 1, value + 1);
    }
    Bytes Trailing() {
        u(1, 1);
        return mBytes;
    }

  private:
    Bytes mBytes;
    unsigned mCount = 0;
};

// A Baseline set with picture order type 1, `fields` for interlaced ones, cropped by one unit on each side,
// and the given aspect ratio index (0xff00 | index for none at all).
Bytes HandMadeSps(bool fields, uint32_t aspectRatio) {
    Bits bits;
    bits.u(8, 0x67).u(8, 66).u(16, 30).ue(0).ue(0);
    bits.ue(1).u(1, 0).ue(1).ue(2).ue(3).ue(1).ue(2).ue(3);  // order type 1 with three offsets
    bits.ue(1).u(1, 0).ue(9).ue(4).u(1, fields ? 0 : 1);     // 160 x 80, or x 160
    if (fields) bits.u(1, 0);
    bits.u(1, 1).u(1, 1).ue(1).ue(1).ue(1).ue(1);
    bits.u(1, 1).u(1, aspectRatio < 0x100 ? 1 : 0);
    if (aspectRatio < 0x100) bits.u(8, aspectRatio);
    if (aspectRatio == 255) bits.u(16, 0x1234).u(16, 0xfedc);
    return bits.Trailing();
}

// A High set of 64 x 48 with own scaling lists: one of 16 and one of 64 entries in full, one cut off after
// its first.
Bytes SpsWithScalingLists() {
    Bits bits;
    bits.u(8, 0x67).u(8, 100).u(16, 30).ue(0).ue(1).ue(0).ue(0).u(1, 0);
    bits.u(1, 1);  // lists follow, here the fourth, the fifth and the last of eight
    bits.u(3, 0).u(1, 1);
    for (int i = 0; i < 16; ++i) bits.ue(1);
    bits.u(1, 1).ue(16);  // 8 less 8: nothing more
    bits.u(2, 0).u(1, 1);
    for (int i = 0; i < 64; ++i) bits.ue(1);
    bits.ue(0).ue(2).ue(1).u(1, 0).ue(3).ue(2).u(1, 1).u(1, 1).u(1, 0).u(1, 0);
    return bits.Trailing();
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
        // As none does.
        {"crop unit of frames", HandMadeSps(false, 0xffff), 156, 76, -1, -1},
        {"crop unit of fields", HandMadeSps(true, 0xffff), 156, 152, -1, -1},
        {"ratio by index", HandMadeSps(false, 13), 156, 76, 160, 99},
        {"last index", HandMadeSps(false, 16), 156, 76, 2, 1},
        {"index past the table", HandMadeSps(false, 17), 156, 76, -1, -1},
        {"unspecified index", HandMadeSps(false, 0), 156, 76, -1, -1},
        {"square", HandMadeSps(false, 1), 156, 76, -1, -1},
        {"scaling lists", SpsWithScalingLists(), 64, 48, -1, -1},
        {"own ratio", HandMadeSps(false, 255), 156, 76, 0x1234, 0xfedc},
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

TEST(GetNextNALUnit, TakesUnitsApart) {
    struct Case {
        const char* why;
        Bytes stream;
        bool endIsAStartCode;
        std::vector<Bytes> units;
        status_t last;
    };
    const Case cases[] = {
        {"nothing", {}, true, {}, -EAGAIN},
        {"no start code", {1, 2, 3, 4}, true, {}, -EAGAIN},
        {"only a start code", {0, 0, 1}, true, {{}}, -EAGAIN},
        {"last unit open", {0, 0, 1, 5, 6}, false, {}, -EAGAIN},
        {"last unit ended", {0, 0, 1, 5, 6}, true, {{5, 6}}, -EAGAIN},
        {"bytes in front", {7, 7, 0, 0, 1, 5, 0, 0, 1, 6}, true, {{5}, {6}}, -EAGAIN},
        {"zeros behind units", {0, 0, 1, 5, 0, 0, 0, 0, 1, 6, 0, 0}, true, {{5}, {6}}, -EAGAIN},
        {"a unit of zeros", {0, 0, 1, 0, 0, 0, 0, 1, 6}, true, {{0}, {6}}, -EAGAIN},
        {"an empty unit", {0, 0, 1, 0, 0, 1, 6}, true, {{}, {6}}, -EAGAIN},
        {"first of two only", {0, 0, 1, 5, 0, 0, 1, 6}, false, {{5}}, -EAGAIN},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        const Bytes stream = c.stream;  // its own allocation: reads past it show
        const uint8_t* data = stream.data();
        size_t size = stream.size();
        std::vector<Bytes> units;
        const uint8_t* nal;
        size_t nalSize;
        status_t status;
        while ((status = getNextNALUnit(&data, &size, &nal, &nalSize, c.endIsAStartCode)) == OK) {
            units.emplace_back(nal, nal + nalSize);
            if (units.size() > 10) break;
        }
        EXPECT_EQ(units, c.units);
        EXPECT_EQ(status, c.last);
    }
}

TEST(AccessUnits, KindOfPicture) {
    struct Case {
        const char* why;
        std::initializer_list<Bytes> nals;
        bool idr;
        bool reference;
    };
    const Case cases[] = {
        {"IDR", {{9, 1}, {0x65, 1}}, true, true},
        {"P", {{9, 1}, {0x41, 1}}, false, true},
        {"B that nobody refers to", {{6, 1}, {0x01, 1}}, false, false},
        {"first slice decides", {{0x01, 1}, {0x41, 1}}, false, false},
        {"no slice", {{0x67, 1}}, false, true},
        {"none at all", {}, false, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(IsIDR(Buffer(AnnexB(c.nals))), c.idr);
        EXPECT_EQ(IsAVCReferenceFrame(Buffer(AnnexB(c.nals))), c.reference);
    }
}

TEST(MakeAACCodecSpecificData, LowComplexityStereo) {
    sp<MetaData> meta = MakeAACCodecSpecificData(1, 4, 2);
    EXPECT_EQ(Int32(meta, kKeySampleRate), 44100);
    EXPECT_EQ(Int32(meta, kKeyChannelCount), 2);
    uint32_t type = 1;
    const void* data = nullptr;
    size_t size = 0;
    ASSERT_TRUE(meta->findData(kKeyESDS, &type, &data, &size));
    EXPECT_EQ(type, 0u);
    ASSERT_EQ(size, 24u);
    const uint8_t* esds = static_cast<const uint8_t*>(data);
    EXPECT_EQ(esds[1] + 2u, size) << "the descriptor's own length";
    EXPECT_EQ(Bytes(esds + size - 4, esds + size), (Bytes{5, 2, 0x12, 0x10}));
    EXPECT_DEATH(MakeAACCodecSpecificData(1, 12, 2), "failed: 12 vs. 11");
}

}  // namespace
}  // namespace android
