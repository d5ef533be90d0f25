// Element IDs and sizes as RFC 8794, 4 and 5 write them, and the signed form of EBML lacing.
#include "reader/ReaderFixture.h"

namespace testing_support {
namespace {

using reader::CID;
using reader::CLength;
using reader::CSignedLength;
using reader::kFailure;
using reader::kOk;

TEST(Vint, ElementIdsKeepTheirMarkerAndEndAtFourBytes) {
    const struct {
        const char* bytes;
        reader::Result result;
        uint32_t id;
        int64_t positionAfter;
    } rows[] = {
        {"80", kOk, 0x80, 1},
        {"FF", kOk, 0xFF, 1},
        {"4000", kOk, 0x4000, 2},
        {"7FFF", kOk, 0x7FFF, 2},
        {"2AD7B1", kOk, 0x2AD7B1, 3},
        {"1A45DFA3", kOk, 0x1A45DFA3, 4},
        {"1FFFFFFF", kOk, 0x1FFFFFFF, 4},
        {"0F00000000", kFailure, 0, 1},
        {"0800000000", kFailure, 0, 1},
        {"0100000000", kFailure, 0, 1},
        {"00", kFailure, 0, 1},
        {"1A45DF", kFailure, 0, 3},
        {"42", kFailure, 0, 1},
        {"", kFailure, 0, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.bytes);
        OpenFile open(Hex(row.bytes));
        CID value;
        const auto root = open.Root();
        EXPECT_EQ(row.result, value.Parse(root.get()));
        EXPECT_EQ(row.result == kOk, value.IsSet());
        EXPECT_EQ(row.positionAfter, root->GetPos());
        EXPECT_EQ(row.id, static_cast<uint32_t>(value.Get()));
    }
}

TEST(Vint, SizesOfEveryWidth) {
    const struct {
        const char* bytes;
        uint64_t value;
    } rows[] = {
        {"80", 0},
        {"81", 1},
        {"FE", 126},
        {"4000", 0},
        {"407F", 127},
        {"7FFE", 16382},
        {"3FFFFE", (1u << 21) - 2},
        {"1FFFFFFE", (1u << 28) - 2},
        {"0800000001", 1},
        {"0FFFFFFFFE", (1ull << 35) - 2},
        {"07FFFFFFFFFE", (1ull << 42) - 2},
        {"03FFFFFFFFFFFE", (1ull << 49) - 2},
        {"0100000000000005", 5},
        {"01FFFFFFFFFFFFFE", (1ull << 56) - 2},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.bytes);
        OpenFile open(Concat({Hex(row.bytes), Hex("0101010101")}));
        CLength value;
        EXPECT_EQ(kOk, value.Parse(open.Root().get()));
        EXPECT_EQ(row.value, value.Get());
        EXPECT_TRUE(value.IsSet());
        EXPECT_FALSE(value.IsUnknown());
    }
}

TEST(Vint, AnUnknownSizeOfEveryWidthIsWhatIsLeftOfTheFile) {
    for (int width = 1; width <= 8; ++width) {
        SCOPED_TRACE(width);
        OpenFile open(Concat({UnknownVint(width), Bytes(5)}));
        CLength value;
        EXPECT_EQ(kOk, value.Parse(open.Root().get()));
        EXPECT_EQ(5u, value.Get());
        EXPECT_TRUE(value.IsUnknown());
    }
}

TEST(Vint, SizesThatCannotBeRead) {
    for (const char* bytes : {"", "00", "40", "3FFF", "01FFFFFFFFFFFF"}) {
        SCOPED_TRACE(bytes);
        OpenFile open(Hex(bytes));
        CLength value;
        value.Set(9);
        EXPECT_EQ(kFailure, value.Parse(open.Root().get()));
        EXPECT_FALSE(value.IsSet());
        EXPECT_EQ(0u, value.Get());
    }
}

TEST(Vint, SignedDifferencesTakeTheirBiasOff) {
    const struct {
        const char* bytes;
        int64_t value;
    } rows[] = {
        {"80", -63},
        {"BF", 0},
        {"C0", 1},
        {"FE", 63},
        {"4000", -8191},
        {"5FFF", 0},
        {"7FFE", 8191},
        {"200000", -1048575},
        {"2FFFFF", 0},
        {"10000000", -134217727},
        {"0100000000000000", -((1ll << 55) - 1)},
        // Deliberate: all ones are first taken for an unknown size (4 bytes are left), then the bias comes
        // off.
        {"FF", 4 - 63},
        {"7FFF", 4 - 8191},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.bytes);
        OpenFile open(Concat({Hex(row.bytes), Bytes(4)}));
        CSignedLength value;
        EXPECT_EQ(kOk, value.Parse(open.Root().get()));
        EXPECT_EQ(row.value, static_cast<int64_t>(value.Get()));
    }
}

}  // namespace
}  // namespace testing_support
