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
        uint32_t id;  // 0: none
        int64_t positionAfter;
    } rows[] = {
        {"80", 0x80, 1},
        {"FF", 0xFF, 1},
        {"4000", 0x4000, 2},
        {"7FFF", 0x7FFF, 2},
        {"2AD7B1", 0x2AD7B1, 3},
        {"1A45DFA3", 0x1A45DFA3, 4},
        {"1FFFFFFF", 0x1FFFFFFF, 4},
        {"0F00000000", 0, 1},
        {"0800000000", 0, 1},
        {"0100000000", 0, 1},
        {"00", 0, 1},
        {"1A45DF", 0, 3},
        {"42", 0, 1},
        {"", 0, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.bytes);
        OpenFile open(Hex(row.bytes));
        CID value;
        const auto root = open.Root();
        EXPECT_EQ(row.id != 0 ? kOk : kFailure, value.Parse(root.get()));
        EXPECT_EQ(row.id != 0, value.IsSet());
        EXPECT_EQ(row.positionAfter, root->GetPos());
        EXPECT_EQ(row.id, static_cast<uint32_t>(value.Get()));
    }
}

// Held bytes tell a header that they hold whole, and no other.
TEST(Vint, HeldHeadersAreWhole) {
    const struct {
        const char* bytes;
        uint32_t length;  // 0: not told
        unsigned requests;
    } rows[] = {
        {"A382", 2, 1},
        {"A3407F", 3, 2},
        {"75A181", 3, 2},
        {"1F43B67508FFFFFFFE", 9, 3},
        {"A3010000000000000F", 9, 2},
        {"A3FF", 0, 1},
        {"A37FFF", 0, 2},
        {"0F81", 0, 0},
        {"A300", 0, 0},
    };
    for (const auto& row : rows) {
        const Bytes bytes = Hex(row.bytes);
        for (size_t behind : {0, 1, 40}) {
            Bytes held = bytes;
            held.resize(bytes.size() + behind, 0x55);
            for (size_t size = 0; size <= held.size(); ++size) {
                SCOPED_TRACE(row.bytes + std::string(" of ") + std::to_string(size));
                reader::ElementHeader header;
                unsigned requests = 0;
                const Bytes part(held.begin(), held.begin() + size);
                const uint32_t length =
                    reader::TakeHeldHeader({part.data(), static_cast<uint32_t>(size), 0}, &header, &requests);
                EXPECT_EQ(size < bytes.size() ? 0 : row.length, length);
                EXPECT_TRUE(size < bytes.size() || row.requests == requests);
            }
        }
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
        {"3FFFFE", 0x1FFFFE},
        {"1FFFFFFE", 0xFFFFFFE},
        {"0800000001", 1},
        {"0FFFFFFFFE", 0x7FFFFFFFE},
        {"07FFFFFFFFFE", 0x3FFFFFFFFFE},
        {"03FFFFFFFFFFFE", 0x1FFFFFFFFFFFE},
        {"0100000000000005", 5},
        {"01FFFFFFFFFFFFFE", 0xFFFFFFFFFFFFFE},
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
        {"0100000000000000", -36028797018963967},
        // Deliberate: all ones are first taken for an unknown size (4 bytes are left), then the bias comes
        // off.
        {"FF", -59},
        {"7FFF", -8187},
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
