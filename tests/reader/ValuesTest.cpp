// Typed values: what an element of any size gives, and what a failed read leaves behind.
#include "reader/ReaderFixture.h"

#include <cmath>
#include <cstring>

namespace testing_support {
namespace {

using reader::kFailure;
using reader::kOk;

// A file that is one element; the position stands at its payload.
struct OneElement : OpenFile {
    explicit OneElement(const Element& element)
        : OpenFile(Write({element}).bytes), node(Root()->Child(0, false)) {}
    android::sp<reader::CMatroskaNode> node;
};

OneElement Payload(const char* hex) {
    return OneElement(Bin(id::kVoid, Hex(hex)));
}

// An element that says it has `declared` bytes and has fewer.
OneElement CutPayload(const char* hex, uint64_t declared) {
    return OneElement(Bin(id::kVoid, Hex(hex)).DeclaredSize(declared));
}

// With an empty payload no child can be taken; the value classes must still cope.
template <typename T>
reader::Result ParseEmpty(T* value) {
    OpenFile open(Write({Bin(id::kVoid, {}), Bin(id::kVoid, Hex("FFFF"))}).bytes);
    const auto node = open.Root()->Child(0, false);
    return value->Parse(node.get());
}

TEST(Values, UnsignedKeepsTheLastEightBytes) {
    const struct {
        const char* payload;
        uint64_t value;
    } rows[] = {
        {"FF", 255},
        {"0100", 256},
        {"0102030405060708", 0x0102030405060708ull},
        {"AA0102030405060708", 0x0102030405060708ull},
        {"FFFFFFFFFFFFFFFF", UINT64_MAX},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.payload);
        OneElement one = Payload(row.payload);
        reader::CUInt value;
        EXPECT_EQ(kOk, value.Parse(one.node.get()));
        EXPECT_EQ(row.value, value.Get());
        EXPECT_TRUE(value.IsSet());
    }
}

TEST(Values, SignedExtendsTheFirstBit) {
    const struct {
        const char* payload;
        int64_t value;
    } rows[] = {
        {"FF", -1},
        {"7F", 127},
        {"0080", 128},
        {"80", -128},
        {"FF7F", -129},
        {"800000", -8388608},
        {"8000000000000000", INT64_MIN},
        {"FFFFFFFFFFFFFFFE", -2},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.payload);
        OneElement one = Payload(row.payload);
        reader::CInt value;
        EXPECT_EQ(kOk, value.Parse(one.node.get()));
        EXPECT_EQ(row.value, value.Get());
    }
}

TEST(Values, EmptyElementsAreZeroAndCountAsRead) {
    reader::CUInt number(7);
    EXPECT_EQ(kOk, ParseEmpty(&number));
    EXPECT_EQ(0u, number.Get());
    EXPECT_TRUE(number.IsSet());
    reader::CInt difference;
    EXPECT_EQ(kOk, ParseEmpty(&difference));
    EXPECT_EQ(0, difference.Get());
    reader::CUTF8 name;
    EXPECT_EQ(kOk, ParseEmpty(&name));
    EXPECT_STREQ("", name.c_str());
}

TEST(Values, FloatsHaveFourOrEightBytes) {
    const struct {
        const char* payload;
        bool isRead;
        double value;
    } rows[] = {
        {"3FC00000", true, 1.5},
        {"C2C80000", true, -100.0},
        {"3FF0000000000000", true, 1.0},
        {"40934A0000000000", true, 1234.5},
        {"3FC0", false, 0.0},
        {"3FF00000000000000000", false, 0.0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.payload);
        OneElement one = Payload(row.payload);
        reader::CFloat value;
        EXPECT_EQ(row.isRead ? kOk : kFailure, value.Parse(one.node.get()));
        EXPECT_EQ(row.value, value.Get());
        EXPECT_EQ(row.isRead, value.IsSet());
    }
}

// What a failed Parse leaves of a value that was read before.
template <typename T>
T ParsedThenCut(const char* whole, uint64_t declared) {
    T value;
    EXPECT_EQ(kOk, value.Parse(Payload(whole).node.get()));
    EXPECT_EQ(kFailure, value.Parse(CutPayload("01", declared).node.get()));
    return value;
}

TEST(Values, ACutElementLeavesNothing) {
    const auto number = ParsedThenCut<reader::CUInt>("0102", 4);
    EXPECT_EQ(0u, number.Get());
    EXPECT_FALSE(number.IsSet());
    for (const uint64_t size : {4, 9}) {
        const auto difference = ParsedThenCut<reader::CInt>("0102", size);
        EXPECT_EQ(0, difference.Get());
        EXPECT_FALSE(difference.IsSet());
        const auto real = ParsedThenCut<reader::CFloat>("3FC00000", size);
        EXPECT_EQ(0.0, real.Get());
        EXPECT_FALSE(real.IsSet());
    }
    EXPECT_EQ(0, ParsedThenCut<reader::CShort>("0102", 2).Get());
    EXPECT_TRUE(ParsedThenCut<reader::CANSI>("616263", 9).empty());
    EXPECT_TRUE(ParsedThenCut<reader::CUTF8>("616263", 9).empty());
    EXPECT_EQ(0u, ParsedThenCut<reader::ByteBuffer>("616263", 9).size());
}

TEST(Values, Utf8IsOneZeroByteLongerThanItsElement) {
    OneElement one = Payload("616263");
    reader::CUTF8 text;
    EXPECT_EQ(kOk, text.Parse(one.node.get()));
    EXPECT_EQ(4u, text.size());
    EXPECT_EQ(0, std::memcmp("abc\0", text.c_str(), 5));
}

// Where the bytes are there but cannot be read, nothing is left of a size over memory that nobody filled.
TEST(Values, ABinaryThatCannotBeReadIsEmpty) {
    Faults faults;
    faults.errorFromOffset = 4;
    OpenFile open(Write({Bin(id::kVoid, Bytes(9))}).bytes, faults);
    reader::ByteBuffer binary;
    EXPECT_EQ(kFailure, binary.Parse(open.Root()->Child(0, false).get()));
    EXPECT_EQ(0u, binary.size());
}

TEST(Values, FixedWidthsIgnoreTheElementSize) {
    OneElement one = Payload("FFFE80");
    reader::CShort timecode;
    EXPECT_EQ(kOk, timecode.Parse(one.node.get()));
    EXPECT_EQ(-2, timecode.Get());
    EXPECT_TRUE(timecode.IsSet());
    reader::CByte flags;
    EXPECT_EQ(kOk, flags.Parse(one.node.get()));
    EXPECT_EQ(0x80, flags.Get());
}

// A size that the source cannot deliver must fail before memory is asked for: 2^40 bytes would not be had.
TEST(Values, AnAbsurdSizeIsRefusedBeforeAnythingIsAllocated) {
    for (uint64_t size : {1ull << 32, (1ull << 32) + 2, 1ull << 40, (1ull << 56) - 2}) {
        SCOPED_TRACE(size);
        OneElement one = CutPayload("6162", size);
        reader::ByteBuffer binary;
        EXPECT_EQ(kFailure, binary.Parse(one.node.get()));
        EXPECT_EQ(0u, binary.size());
        OneElement again = CutPayload("6162", size);
        reader::CUTF8 text;
        EXPECT_EQ(kFailure, text.Parse(again.node.get()));
    }
}

}  // namespace
}  // namespace testing_support
