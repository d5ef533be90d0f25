#include "utils/CodecConfig.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utils/Errors.h>
#include <utils/String8.h>
#include <media/stagefright/MetaData.h>

#include <cstring>
#include <memory>
#include <vector>

#include "support/LogCapture.h"

namespace {

using android::MetaData;
using android::sp;
using testing_support::LogCapture;
using testing_support::LogRecord;
using Bytes = std::vector<uint8_t>;

Bytes Esds(const sp<MetaData>& meta) {
    uint32_t type = 1;
    const void* data = nullptr;
    size_t size = 0;
    if (!meta->findData(android::kKeyESDS, &type, &data, &size)) return {};
    EXPECT_EQ(type, 0u);
    const uint8_t* bytes = static_cast<const uint8_t*>(data);
    return Bytes(bytes, bytes + size);
}

Bytes EsdsOf(const Bytes& info) {
    sp<MetaData> meta = new MetaData;
    // An allocation of exactly this size, so that the address sanitizer sees a step beyond it.
    std::unique_ptr<uint8_t[]> exact(new uint8_t[info.size()]);
    memcpy(exact.get(), info.data(), info.size());
    android::AddESDSFromSpecificInfo(meta, exact.get(), static_cast<unsigned>(info.size()));
    return Esds(meta);
}

Bytes Counting(size_t size) {
    Bytes bytes(size);
    for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<uint8_t>(i * 7 + 1);
    return bytes;
}

Bytes operator+(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

Bytes SizeField(size_t value) {
    Bytes field;
    for (; value > 127; value /= 128) field.push_back(static_cast<uint8_t>(128 + value % 128));
    field.push_back(static_cast<uint8_t>(value));
    return field;
}

Bytes Descriptor(uint8_t tag, const Bytes& payload, size_t declared) {
    return Bytes{tag} + SizeField(declared) + payload;
}

// The record as descriptors in each other; `outerShort` is what the outermost one's size field lacks.
Bytes NestedRecord(const Bytes& info, size_t outerShort) {
    const Bytes specific = Descriptor(0x05, info, info.size());
    Bytes config = Bytes{static_cast<uint8_t>(info.size() <= 127 ? 0x40 : 0x01)} + Bytes(12, 0) + specific;
    config = Descriptor(0x04, config, config.size());
    const Bytes payload = Bytes(3, 0) + config;
    return Descriptor(0x03, payload, payload.size() - outerShort);
}

TEST(Esds, KnownBytes) {
    EXPECT_EQ(EsdsOf({0x12, 0x10}), (Bytes{0x03, 0x16, 0, 0, 0, 0x04, 0x11, 0x40, 0,    0,    0,    0,
                                           0,    0,    0, 0, 0, 0,    0,    0,    0x05, 0x02, 0x12, 0x10}));
    const Bytes info = Counting(200);
    const Bytes head = {0x03, 0xDE, 0x01, 0, 0, 0, 0x04, 0xD8, 0x01, 0x01, 0,    0,   0,
                        0,    0,    0,    0, 0, 0, 0,    0,    0,    0x05, 0xC8, 0x01};
    EXPECT_EQ(EsdsOf(info), head + info);
}

// Around the sizes where a size field grows by a byte the stored record is one byte short, and around some of
// them the outermost size as well. Deliberate in the code; under the address sanitizer this also shows that
// nothing is written past the record.
TEST(Esds, SizesAroundTheGrowthOfASizeField) {
    const struct {
        size_t first;
        size_t last;
        size_t cut;         // bytes of `info` that are not stored
        size_t outerShort;  // by how much the outermost size is too small
    } rows[] = {
        {1, 107, 0, 0},       {108, 110, 1, 0},     {111, 112, 0, 0},     {113, 125, 1, 1},
        {126, 400, 0, 0},     {16300, 16361, 0, 0}, {16362, 16364, 1, 0}, {16365, 16367, 0, 0},
        {16368, 16380, 1, 1}, {16381, 16500, 0, 0},
    };
    for (const auto& row : rows) {
        for (size_t size = row.first; size <= row.last; ++size) {
            const Bytes info = Counting(size);
            Bytes expected = NestedRecord(info, row.outerShort);
            expected.resize(expected.size() - row.cut);
            ASSERT_EQ(EsdsOf(info), expected) << "size " << size;
        }
    }
}

TEST(Esds, NothingToWrapChangesNothingAndTheLastOneWins) {
    sp<MetaData> meta = new MetaData;
    const uint8_t info[] = {1, 2, 3};
    android::AddESDSFromSpecificInfo(meta, nullptr, 3);
    android::AddESDSFromSpecificInfo(meta, info, 0);
    EXPECT_EQ(Esds(meta), Bytes{});
    android::AddESDSFromSpecificInfo(meta, info, 3);
    android::AddESDSFromSpecificInfo(meta, info, 1);
    EXPECT_EQ(Esds(meta), EsdsOf({1}));
    android::AddESDSFromSpecificInfo(meta, info, 0);
    EXPECT_EQ(Esds(meta), EsdsOf({1}));
}

// A size whose record would not fit 32 bits is a failed allocation, never a small buffer: `info` is not
// touched.
TEST(Esds, RecordBeyond32BitsIsRefused) {
    sp<MetaData> meta = new MetaData;
    const uint8_t info[] = {1};
    LogCapture log;
    android::AddESDSFromSpecificInfo(meta, info, 0xFFFFFFF0u);
    EXPECT_THAT(log.Records(), testing::ElementsAre(LogRecord{ANDROID_LOG_ERROR, "Utils",
                                                              "new esds buffer failed, no momery"}));
    EXPECT_EQ(Esds(meta), Bytes{});
}

}  // namespace
