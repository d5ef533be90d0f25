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
#include <random>
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

// Writes a sequence parameter set field by field.
class SpsWriter {
  public:
    explicit SpsWriter(uint8_t profile) : mBytes{0x67, profile, 0, 30} {}

    SpsWriter& bits(const char* digits) {
        for (; *digits != '\0'; ++digits) {
            if (mUsed % 8 == 0) mBytes.push_back(0);
            if (*digits == '1') mBytes.back() = static_cast<uint8_t>(mBytes.back() | 0x80 >> mUsed % 8);
            ++mUsed;
        }
        return *this;
    }
    SpsWriter& ue(uint32_t value) {
        std::string digits;
        for (uint64_t code = uint64_t{value} + 1; code > 0; code /= 2) digits.insert(0, code % 2 ? "1" : "0");
        return bits((std::string(digits.size() - 1, '0') + digits).c_str());
    }
    // Frame number, picture order 0, reference frames, 11 x 9 macroblocks of whole frames.
    SpsWriter& common() { return ue(0).ue(0).ue(0).ue(1).bits("0").ue(10).ue(8).bits("11"); }
    Bytes done() const { return mBytes; }

  private:
    Bytes mBytes;
    unsigned mUsed = 0;
};

struct SetRow {
    const char* name;
    Bytes sps;
};

std::vector<SetRow> WholeSets() {
    const std::string flatList(16, '1');  // entry by entry the same as before
    return {
        {"encoder's own, baseline", {0x67, 0x42, 0xC0, 0x0A, 0xD9, 0x04, 0x26, 0xC0, 0x44, 0x00, 0x00, 0x03,
                                     0x00, 0x04, 0x00, 0x00, 0x03, 0x00, 0xC8, 0x3C, 0x48, 0x99, 0x20}},
        {"encoder's own, high, interlaced, cropped, explicit aspect ratio",
         {0x67, 0x64, 0x00, 0x15, 0xAC, 0xD9, 0x42, 0xC8, 0xFC, 0x46, 0x02, 0x20, 0x00,
          0x00, 0x03, 0x00, 0x20, 0x00, 0x00, 0x06, 0x43, 0xE2, 0x85, 0x32, 0xC0}},
        {"encoder's own, 4:4:4",
         {0x67, 0xF4, 0x00, 0x0B, 0x91, 0x9B, 0x28, 0x59, 0xFF, 0x1B, 0x80, 0x88, 0x00,
          0x00, 0x03, 0x00, 0x08, 0x00, 0x00, 0x03, 0x01, 0x90, 0x78, 0xA1, 0x4C, 0xB0}},
        {"shortest", SpsWriter(66).ue(0).common().bits("001").done()},
        {"cropping", SpsWriter(77).ue(0).common().bits("1").ue(1).ue(2).ue(3).ue(4).bits("01").done()},
        {"aspect ratio from the table", SpsWriter(77).ue(0).common().bits("0110000000111").done()},
        {"explicit aspect ratio", SpsWriter(77)
                                      .ue(0)
                                      .common()
                                      .bits("011")
                                      .bits("11111111")
                                      .bits("000000000100000000000000001100001")
                                      .done()},
        {"picture order by cycle", SpsWriter(66)
                                       .ue(0)
                                       .ue(0)
                                       .ue(1)
                                       .bits("0")
                                       .ue(3)
                                       .ue(4)
                                       .ue(2)
                                       .ue(7)
                                       .ue(8)
                                       .ue(1)
                                       .bits("0")
                                       .ue(10)
                                       .ue(8)
                                       .bits("11001")
                                       .done()},
        {"scaling lists, 4:2:0", SpsWriter(100)
                                     .ue(0)
                                     .ue(1)
                                     .ue(0)
                                     .ue(0)
                                     .bits("011")
                                     .bits(flatList.c_str())
                                     .bits("000001")
                                     .bits((flatList + flatList + flatList + flatList).c_str())
                                     .bits("0")
                                     .common()
                                     .bits("001")
                                     .done()},
        {"scaling list that ends early, 4:4:4",
         // -8 makes the next scale 0: the rest of the list is not there.
         SpsWriter(244)
             .ue(0)
             .ue(3)
             .bits("0")
             .ue(0)
             .ue(0)
             .bits("011")
             .ue(16)
             .bits("00000000000")
             .common()
             .bits("001")
             .done()},
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

TEST(ParameterSets, WhereTheUnitsAre) {
    const Bytes sps = SpsWriter(66).ue(0).common().bits("001").done();
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

// Random bits behind a plausible head: whatever is accepted must not make the platform abort.
TEST(ParameterSets, RandomSetsNeverReachAnAbort) {
    std::mt19937 random(20150601);
    const uint8_t profiles[] = {66, 77, 100, 110, 122, 244, 44, 83, 86};
    int accepted = 0;
    for (int round = 0; round < 20000; ++round) {
        Bytes sps = {0x67, profiles[random() % 9], 0, 30};
        const size_t size = random() % 40;
        const unsigned density = random() % 4;  // few zero bits make short codes
        for (size_t i = 0; i < size; ++i) {
            uint8_t byte = static_cast<uint8_t>(random());
            for (unsigned more = 0; more < density; ++more) byte = static_cast<uint8_t>(byte | random());
            sps.push_back(byte);
        }
        const Bytes unit = kStartCode + sps + kStartCode + kPps;
        if (!Holds(unit)) continue;
        ++accepted;
        EXPECT_TRUE(AskPlatform(unit) != nullptr) << testing::PrintToString(unit);
    }
    EXPECT_GT(accepted, 1000);
}

}  // namespace
