// HoldsParameterSets promises that the platform's function can be asked: accepted units are handed to it,
// where an abort would end this program; refused ones have to make it abort or answer null.
#include <gtest/gtest.h>

#include <utils/Errors.h>
#include <utils/String8.h>
#include <media/stagefright/MetaData.h>
#include <media/stagefright/foundation/ABuffer.h>
#include "include/avc_utils.h"

#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "matroska/ElementaryStream.h"
#include "support/LogCapture.h"

namespace {

using android::ABuffer;
using android::MetaData;
using android::sp;
using Bytes = std::vector<uint8_t>;

const Bytes kStartCode = {0, 0, 0, 1};
const Bytes kPps = {0x68, 0xEB, 0xE3, 0xCB};

Bytes operator+(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

bool Holds(const Bytes& unit) {
    std::unique_ptr<uint8_t[]> exact(new uint8_t[unit.size()]);
    if (!unit.empty()) memcpy(exact.get(), unit.data(), unit.size());
    return android::HoldsParameterSets(exact.get(), unit.size());
}

sp<MetaData> AskPlatform(Bytes unit) {
    testing_support::LogCapture quiet;
    sp<ABuffer> buffer = new ABuffer(unit.data(), unit.size());
    return android::MakeAVCCodecSpecificData(buffer);
}

// A sequence parameter set, field by field: bits as they are behind a "b", the others as Exp-Golomb codes.
Bytes Sps(uint8_t profile, const std::string& fields) {
    std::string digits;
    std::istringstream words(fields);
    for (std::string word; words >> word;) {
        if (word[0] == 'b') {
            digits += word.substr(1);
            continue;
        }
        std::string code;
        for (uint64_t value = std::stoull(word) + 1; value > 0; value /= 2)
            code.insert(0, value % 2 ? "1" : "0");
        digits += std::string(code.size() - 1, '0') + code;
    }
    Bytes bytes = {0x67, profile, 0, 30};
    for (size_t i = 0; i < digits.size(); ++i) {
        if (i % 8 == 0) bytes.push_back(0);
        if (digits[i] == '1') bytes.back() = static_cast<uint8_t>(bytes.back() | 0x80 >> i % 8);
    }
    return bytes;
}

// Frame number, picture order 0, reference frames, 11 x 9 macroblocks of whole frames.
const std::string kCommon = " 0 0 0 1 b0 10 8 b11 ";

struct SetRow {
    const char* name;
    Bytes sps;
};

std::vector<SetRow> WholeSets() {
    const std::string flat(16, '1');  // a scaling list that is entry by entry the same as before
    return {
        {"encoder's own, baseline", {0x67, 0x42, 0xC0, 0x0A, 0xD9, 0x04, 0x26, 0xC0, 0x44, 0x00, 0x00, 0x03,
                                     0x00, 0x04, 0x00, 0x00, 0x03, 0x00, 0xC8, 0x3C, 0x48, 0x99, 0x20}},
        {"encoder's own, high, interlaced, cropped, explicit aspect ratio",
         {0x67, 0x64, 0x00, 0x15, 0xAC, 0xD9, 0x42, 0xC8, 0xFC, 0x46, 0x02, 0x20, 0x00,
          0x00, 0x03, 0x00, 0x20, 0x00, 0x00, 0x06, 0x43, 0xE2, 0x85, 0x32, 0xC0}},
        {"encoder's own, 4:4:4",
         {0x67, 0xF4, 0x00, 0x0B, 0x91, 0x9B, 0x28, 0x59, 0xFF, 0x1B, 0x80, 0x88, 0x00,
          0x00, 0x03, 0x00, 0x08, 0x00, 0x00, 0x03, 0x01, 0x90, 0x78, 0xA1, 0x4C, 0xB0}},
        {"shortest", Sps(66, "0" + kCommon + "b001")},
        {"ends on a byte's last bit", Sps(66, "7" + kCommon + "b00")},
        {"longest code", Sps(66, "0 4294967294 0 0 1 b0 10 8 b11001")},
        {"cropping", Sps(77, "0" + kCommon + "b1 1 2 3 4 b01")},
        {"aspect ratio from the table", Sps(77, "0" + kCommon + "b0110000000111")},
        {"explicit aspect ratio",
         Sps(77, "0" + kCommon + "b011 b11111111 b000000000100000000000000001100001")},
        {"picture order by cycle", Sps(66, "0 0 1 b0 3 4 2 7 8 1 b0 10 8 b11001")},
        {"scaling lists, 4:2:0", Sps(100, "0 1 0 0 b011 b" + flat + " b000001 b" + flat + flat + flat + flat +
                                              " b0" + kCommon + "b001")},
        // -4 twice makes the next scale 0, as 248 does at once: the rest of the list is not there.
        {"scaling lists that end early, 4:4:4",
         Sps(244, "0 3 b0 0 0 b011 8 8 b1 495 b0000000000" + kCommon + "b001")},
    };
}

TEST(ParameterSets, WholeSetsAreTakenAndThePlatformAgrees) {
    for (const SetRow& row : WholeSets()) {
        const Bytes unit = kStartCode + row.sps + kStartCode + kPps;
        EXPECT_TRUE(Holds(unit)) << row.name;
        if (!Holds(unit)) continue;
        EXPECT_TRUE(AskPlatform(unit) != nullptr) << row.name;
    }
}

// Each set cut at each byte: taken exactly where the platform lives through it.
TEST(ParameterSetsDeathTest, CutSetsAreRefusedExactlyWhereThePlatformAborts) {
    for (const SetRow& row : WholeSets()) {
        for (size_t size = 1; size < row.sps.size(); ++size) {
            const Bytes cut(row.sps.begin(), row.sps.begin() + static_cast<long>(size));
            const Bytes unit = kStartCode + cut + kStartCode + kPps;
            if (Holds(unit)) {
                EXPECT_TRUE(AskPlatform(unit) != nullptr) << row.name << " cut at " << size;
            } else {
                EXPECT_DEATH(AskPlatform(unit), "CHECK") << row.name << " cut at " << size;
            }
        }
    }
}

// These have fields of the chroma format, for which a set without them is too short.
TEST(ParameterSets, ProfilesWithAChromaFormat) {
    std::vector<int> refused;
    for (int profile = 0; profile < 256; ++profile) {
        const Bytes sps = Sps(static_cast<uint8_t>(profile), "0" + kCommon + "b001");
        if (!Holds(kStartCode + sps + kStartCode + kPps)) refused.push_back(profile);
    }
    EXPECT_EQ((std::vector<int>{44, 83, 86, 100, 110, 122, 244}), refused);
}

TEST(ParameterSets, WhereTheUnitsAre) {
    const Bytes sps = Sps(66, "0" + kCommon + "b001");
    const Bytes slice = {0x65, 0x88, 0x80};
    const Bytes cut(sps.begin(), sps.begin() + 4);
    const Bytes shortCode = {0, 0, 1};
    const struct {
        const char* name;
        Bytes unit;
        bool holds;
    } rows[] = {
        {"behind other units", kStartCode + Bytes{0x09, 0xF0} + kStartCode + sps + kStartCode + kPps, true},
        {"three-byte start codes", shortCode + sps + shortCode + kPps + shortCode + slice, true},
        {"many zeros in front", Bytes(9, 0) + shortCode + sps + shortCode + kPps, true},
        {"the picture set first", kStartCode + kPps + kStartCode + sps, true},
        {"empty units in between", kStartCode + shortCode + sps + shortCode + shortCode + kPps, true},
        {"zeros behind each", kStartCode + sps + Bytes(3, 0) + kStartCode + kPps + Bytes(5, 0), true},
        {"other reference priorities",
         kStartCode + (Bytes{0x27} + Bytes(sps.begin() + 1, sps.end())) + kStartCode + Bytes{0x28, 0xEB},
         true},
        {"a code of 36 zeros", kStartCode + Sps(66, "0 68719476735 0 0 1 b0 10 8 b11001") + kStartCode + kPps,
         false},
        {"no picture set", kStartCode + sps + kStartCode + slice, false},
        {"no sequence set", kStartCode + kPps + kStartCode + slice, false},
        {"the picture set's start code cut off", kStartCode + sps + Bytes{0, 0}, false},
        {"a start code at the very end", kStartCode + sps + kStartCode, false},
        {"the first sequence set is cut, a second is whole",
         kStartCode + cut + kStartCode + sps + kStartCode + kPps, false},
        {"the first sequence set is whole, a second is cut",
         kStartCode + sps + kStartCode + cut + kStartCode + kPps, true},
        {"a single zero before the first one", Bytes{0, 1} + kStartCode + sps + kStartCode + kPps, false},
        {"the picture set first, a cut sequence set", kStartCode + kPps + kStartCode + cut, false},
        {"something before the first start code", Bytes{9} + kStartCode + sps + kStartCode + kPps, false},
        {"length prefixes", Bytes{0, 0, 0, 9} + sps + Bytes{0, 0, 0, 4} + kPps, false},
        {"the picture set first, a cut sequence set, a start code at the very end",
         kStartCode + kPps + kStartCode + Bytes(sps.begin(), sps.end() - 1) + kStartCode, false},
        {"zeros only", Bytes(40, 0), false},
        {"two zeros", Bytes(2, 0), false},
        {"nothing", {}, false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Holds(row.unit), row.holds) << row.name;
        if (!row.holds) continue;
        EXPECT_TRUE(AskPlatform(row.unit) != nullptr) << row.name;
    }
    EXPECT_FALSE(android::HoldsParameterSets(nullptr, 40));
}

}  // namespace
