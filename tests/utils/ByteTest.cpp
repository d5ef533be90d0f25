// What works on plain bytes: integers, NAL rewriting, MPEG-4 headers, pictures. Inputs are copied into
// allocations of exactly their size, so that the address sanitizer sees any step beyond.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <memory>
#include <vector>

#include "utils/CodecConfig.h"
#include "utils/FixedByteOrder.h"
#include "utils/NalRewrite.h"
#include "utils/PictureCopy.h"

namespace {

using Bytes = std::vector<uint8_t>;

// A heap copy of exactly as many bytes.
class Exact {
  public:
    explicit Exact(const Bytes& bytes) : mData(new uint8_t[bytes.size()]), mSize(bytes.size()) {
        if (mSize > 0) memcpy(mData.get(), bytes.data(), mSize);
    }
    uint8_t* data() { return mData.get(); }
    int size() const { return static_cast<int>(mSize); }
    Bytes bytes() const { return Bytes(mData.get(), mData.get() + mSize); }

  private:
    std::unique_ptr<uint8_t[]> mData;
    size_t mSize;
};

TEST(FixedByteOrder, UnalignedAndWithHighBits) {
    const uint8_t bytes[] = {0x00, 0xF1, 0xE2, 0xD3, 0xC4, 0xB5, 0xA6, 0x97, 0x88};
    const uint8_t* at = bytes + 1;
    EXPECT_EQ(android::U16_AT(at), 0xF1E2u);
    EXPECT_EQ(android::U32_AT(at), 0xF1E2D3C4u);
    EXPECT_EQ(android::U64_AT(at), 0xF1E2D3C4B5A69788u);
    EXPECT_EQ(android::U16LE_AT(at), 0xE2F1u);
    EXPECT_EQ(android::U32LE_AT(at), 0xC4D3E2F1u);
    EXPECT_EQ(android::U64LE_AT(at), 0x8897A6B5C4D3E2F1u);
    EXPECT_EQ(android::hton64(0x0102030405060708), 0x0807060504030201u);
}

TEST(CheckH264Type, TellsStartCodesFromLengths) {
    const struct {
        Bytes frame;
        int type;
    } rows[] = {
        {{}, -1},          {{0, 0, 1}, -1}, {{0, 0, 0, 1}, 0}, {{0, 0, 0, 1, 0x65}, 0}, {{0, 0, 1, 0x65}, 1},
        {{0, 0, 0, 2}, 1},
    };
    for (const auto& row : rows) {
        Exact frame(row.frame);
        EXPECT_EQ(android::CheckH264Type(frame.data(), frame.size()), row.type)
            << testing::PrintToString(row.frame);
    }
    EXPECT_EQ(android::CheckH264Type(nullptr, -5), -1);
}

TEST(NalRewrite, TurnsLengthsIntoStartCodes) {
    const struct {
        const char* name;
        Bytes before;
        Bytes after;
        unsigned converted;
    } rows[] = {
        {"two units",
         {0, 0, 0, 2, 0xAA, 0xBB, 0, 0, 0, 1, 0xCC},
         {0, 0, 0, 1, 0xAA, 0xBB, 0, 0, 0, 1, 0xCC},
         11},
        {"empty units", {0, 0, 0, 0, 0, 0, 0, 0}, {0, 0, 0, 1, 0, 0, 0, 1}, 8},
        {"nothing", {}, {}, 0},
        {"less than a length", {0, 0, 0}, {0, 0, 0}, 0},
        {"three bytes behind", {0, 0, 0, 1, 9, 0, 0, 0}, {0, 0, 0, 1, 9, 0, 0, 0}, 5},
        {"one unit up to 4 beyond the end", {0, 0, 0, 5, 0xCC}, {0, 0, 0, 1, 0xCC}, 9},
        {"one unit 5 beyond the end", {0, 0, 0, 6, 0xCC}, {0, 0, 0, 6, 0xCC}, 0},
        {"only a length, taken", {0, 0, 0, 4}, {0, 0, 0, 1}, 8},
        {"last length too large", {0, 0, 0, 1, 9, 0, 0, 1, 0, 8}, {0, 0, 0, 1, 9, 0, 0, 1, 0, 8}, 5},
        {"largest length", {0x7F, 0xFF, 0xFF, 0xFF, 0}, {0x7F, 0xFF, 0xFF, 0xFF, 0}, 0},
        {"negative length", {0x80, 0, 0, 0, 0}, {0x80, 0, 0, 0, 0}, 0},
    };
    for (const auto& row : rows) {
        Exact frame(row.before);
        EXPECT_EQ(android::H264DataPreprocess_AVC(frame.data(), frame.size()), row.converted) << row.name;
        EXPECT_EQ(frame.bytes(), row.after) << row.name;
    }
    EXPECT_EQ(android::H264DataPreprocess_AVC(nullptr, INT_MIN), 0u);

    Exact untouched({0, 0, 0, 2, 0xAA, 0xBB});
    EXPECT_EQ(android::H264DataPreprocess_IEC(untouched.data(), 6), 6);
    EXPECT_EQ(untouched.bytes(), (Bytes{0, 0, 0, 2, 0xAA, 0xBB}));
}

TEST(PreProcessM4vExtraData, FindsTheEndOfTheHeaders) {
    const struct {
        const char* name;
        Bytes frame;
        int length;
    } rows[] = {
        {"empty", {}, 0},
        {"three bytes", {0, 0, 1}, 0},
        {"four bytes", {0, 0, 1, 0xB6}, 0},
        {"VOP at once", {0, 0, 1, 0xB6, 9, 9}, 0},
        {"VOP", {0, 0, 1, 0xB0, 8, 0, 0, 1, 0xB6, 9}, 5},
        {"group of VOP", {0, 0, 1, 0x20, 0, 0, 0, 1, 0xB3, 9}, 5},
        {"other codes are stepped over whole", {0, 0, 1, 0x00, 0, 1, 0xB6, 9, 9, 9, 9}, 7},
        {"VOP in the last four bytes", {7, 7, 0, 0, 1, 0xB6}, 2},
        {"other code as the last one looked at", {0, 0, 1, 0xB0, 5}, 4},
        {"none", {1, 2, 3, 4, 5, 6, 7, 8}, 4},
    };
    for (const auto& row : rows) {
        Exact frame(row.frame);
        EXPECT_EQ(android::PreProcessM4vExtraData(frame.data(), static_cast<unsigned>(frame.size())),
                  row.length)
            << row.name;
    }
    EXPECT_EQ(android::PreProcessM4vExtraData(nullptr, 100), 0);
}

// A plane of rows; each byte tells its row and column.
Bytes Plane(uint8_t base, int rows, int stride) {
    Bytes plane;
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < stride; ++column) {
            plane.push_back(static_cast<uint8_t>(base + row * 16 + column % 16));
        }
    }
    return plane;
}

// 6 x 5 pixels: luma rows are 16 wide, chroma (3 x 2, rows 8 apart) begins behind 30 bytes, in the middle of
// them.
TEST(PictureCopy, ChromaBeginsBehindTheUnpaddedPicture) {
    constexpr int kStride = 20, kWidth = 6, kHeight = 5;
    Exact y(Plane(0x00, kHeight, kStride)), u(Plane(0x80, 2, kStride / 2)), v(Plane(0xC0, 2, kStride / 2));
    uint8_t* planes[] = {y.data(), u.data(), v.data()};
    Exact picture(Bytes(16 * kHeight, 0xEE));
    android::copyDataYUV420(picture.data(), planes, kStride, kWidth, kHeight);

    Bytes expected;
    for (int row = 0; row < kHeight; ++row) {
        for (int column = 0; column < 16; ++column)
            expected.push_back(static_cast<uint8_t>(row * 16 + column));
    }
    const uint8_t chroma[4][3] = {
        {0x80, 0x81, 0x82}, {0x90, 0x91, 0x92}, {0xC0, 0xC1, 0xC2}, {0xD0, 0xD1, 0xD2}};
    for (int row = 0; row < 4; ++row) memcpy(&expected[static_cast<size_t>(30 + 8 * row)], chroma[row], 3);
    EXPECT_EQ(picture.bytes(), expected);
}

TEST(PictureCopy, NothingForEmptyPictures) {
    uint8_t* planes[] = {nullptr, nullptr, nullptr};
    for (const auto& size : {std::pair<int, int>{0, 4}, {4, 0}, {-20, 4}, {4, -1}, {INT_MIN, INT_MIN}}) {
        android::copyDataYUV420(nullptr, planes, 16, size.first, size.second);
    }
}

}  // namespace
