#include "matroska/ElementaryStream.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <vector>

namespace {

using Bytes = std::vector<uint8_t>;

// A heap copy of exactly as many bytes, so that the address sanitizer sees any look beyond.
std::unique_ptr<uint8_t[]> Exact(const Bytes& bytes) {
    std::unique_ptr<uint8_t[]> copy(new uint8_t[bytes.size()]);
    if (!bytes.empty()) memcpy(copy.get(), bytes.data(), bytes.size());
    return copy;
}

TEST(SequenceParameterSet, OnlyTheFourByteStartCodeAndHeader67Count) {
    const struct {
        Bytes head;
        size_t size;
        bool starts;
    } rows[] = {
        {{0, 0, 0, 1, 0x67}, 11, true},  {{0, 0, 0, 1, 0x67}, 10, false},
        {{0, 0, 1, 0x67}, 11, false},    {{0, 0, 0, 1, 0x27}, 11, false},
        {{0, 0, 0, 1, 0x47}, 11, false}, {{0, 0, 0, 0, 1, 0x67}, 12, false},
        {{0, 0, 0}, 3, false},           {{}, 0, false},
    };
    for (const auto& row : rows) {
        Bytes frame = row.head;
        frame.resize(row.size, 0x42);
        EXPECT_EQ(android::StartsWithSequenceParameterSet(Exact(frame).get(), frame.size()), row.starts)
            << testing::PrintToString(frame);
    }
}

TEST(FindFirstVop, StopsAtTheVopOrItsLimits) {
    const struct {
        size_t vop;  // where the start code lies; beyond `size`: nowhere
        size_t size;
        size_t found;
    } rows[] = {
        {0, 4, 0},       {0, 50, 0},      {1, 5, 1},       {46, 50, 46},    {45, 50, 45},
        {99, 50, 46},    {199, 300, 199}, {200, 300, 200}, {201, 300, 200}, {999, 300, 200},
        {999, 204, 200}, {999, 203, 199}, {999, 4, 0},     {999, 3, 0},     {999, 0, 0},
    };
    for (const auto& row : rows) {
        Bytes frame(row.size, 0);
        const uint8_t startCode[] = {0, 0, 1, 0xB6};
        if (row.vop + 4 <= row.size)
            std::copy(startCode, startCode + 4, frame.begin() + static_cast<long>(row.vop));
        EXPECT_EQ(android::FindFirstVop(Exact(frame).get(), frame.size()), row.found)
            << row.vop << " of " << row.size;
    }
    EXPECT_EQ(android::FindFirstVop(nullptr, 50), 0u);
}

struct A52Row {
    const char* name;
    Bytes frame;
    int length;
    int flags;
    int sampleRate;
    int bitRate;
};

TEST(A52SyncInfo, HeadersAndWhatRefusedOnesLeaveBehind) {
    const A52Row rows[] = {
        // -7: an output that is not written
        {"48 kHz, 192 kbit/s, stereo", {0x0B, 0x77, 1, 2, 0x14, 0x40, 0x40}, 768, 2, 48000, 192000},
        {"44.1 kHz, even size code", {0x0B, 0x77, 0, 0, 0x56, 0x40, 0x40}, 974, 2, 44100, 224000},
        {"44.1 kHz, odd size code", {0x0B, 0x77, 0, 0, 0x57, 0x40, 0x40}, 976, 2, 44100, 224000},
        {"32 kHz, largest size code", {0x0B, 0x77, 0, 0, 0xA5, 0x40, 0x40}, 3840, 2, 32000, 640000},
        {"half rate", {0x0B, 0x77, 0, 0, 0x14, 0x48, 0x40}, 768, 2, 24000, 96000},
        {"eighth rate", {0x0B, 0x77, 0, 0, 0x14, 0x5F, 0x40}, 768, 2, 6000, 24000},
        {"Dolby Surround", {0x0B, 0x77, 0, 0, 0x14, 0x40, 0x50}, 768, 10, 48000, 192000},
        {"Dolby Surround with LFE", {0x0B, 0x77, 0, 0, 0x14, 0x40, 0x54}, 768, 26, 48000, 192000},
        {"mono with LFE", {0x0B, 0x77, 0, 0, 0x14, 0x40, 0x30}, 768, 17, 48000, 192000},
        {"5.1", {0x0B, 0x77, 0, 0, 0x14, 0x40, 0xE1}, 768, 23, 48000, 192000},
        {"5.0, other bits set", {0x0B, 0x77, 0, 0, 0x14, 0x40, 0xFE}, 768, 7, 48000, 192000},
        {"longer frame", {0x0B, 0x77, 0, 0, 0x14, 0x40, 0x40, 9, 9}, 768, 2, 48000, 192000},
        {"no sync word", {0x0B, 0x78, 0, 0, 0x14, 0x40, 0x40}, 0, -7, -7, -7},
        {"swapped sync word", {0x77, 0x0B, 0, 0, 0x14, 0x40, 0x40}, 0, -7, -7, -7},
        {"later version", {0x0B, 0x77, 0, 0, 0x14, 0x60, 0x40}, 0, -7, -7, -7},
        {"size code 38", {0x0B, 0x77, 0, 0, 0x26, 0x40, 0x40}, 0, 2, -7, -7},
        {"reserved sample rate", {0x0B, 0x77, 0, 0, 0xC0, 0x40, 0x40}, 0, 2, -7, 32000},
        {"six bytes", {0x0B, 0x77, 0, 0, 0x14, 0x40}, 0, -7, -7, -7},
        {"one byte", {0x0B}, 0, -7, -7, -7},
        {"empty", {}, 0, -7, -7, -7},
    };
    for (const A52Row& row : rows) {
        int flags = -7, sampleRate = -7, bitRate = -7;
        const auto frame = Exact(row.frame);
        EXPECT_EQ(android::ParseA52SyncInfo(frame.get(), row.frame.size(), &flags, &sampleRate, &bitRate),
                  row.length)
            << row.name;
        EXPECT_EQ(flags, row.flags) << row.name;
        EXPECT_EQ(sampleRate, row.sampleRate) << row.name;
        EXPECT_EQ(bitRate, row.bitRate) << row.name;
        if (row.frame.size() < android::kA52HeaderSize) continue;
        EXPECT_EQ(android::a52_syncinfo(frame.get(), &flags, &sampleRate, &bitRate), row.length) << row.name;
    }
}

}  // namespace
