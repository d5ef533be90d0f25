#include "matroska/CodecPrivate.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utils/Errors.h>
#include <utils/String8.h>
#include <android/log.h>
#include <media/stagefright/MetaData.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

// Takes the place of the assertion logger's entry in this program, because that one keeps the condition's
// text to itself when a message is given. It shows all three texts and aborts as the real one does.
extern "C" void __android_log_assert(const char* condition, const char* tag, const char* format, ...) {
    std::fprintf(stderr, "assert %s / %s / ", condition, tag);
    va_list arguments;
    va_start(arguments, format);
    std::vfprintf(stderr, format, arguments);
    va_end(arguments);
    std::fprintf(stderr, "\n");
    std::abort();
}

namespace {

using android::MetaData;
using android::sp;
using testing::HasSubstr;
using Bytes = std::vector<uint8_t>;

Bytes Data(const sp<MetaData>& meta, uint32_t key) {
    uint32_t type = 1;
    const void* data = nullptr;
    size_t size = 0;
    if (!meta->findData(key, &type, &data, &size)) return {0xDE, 0xAD};
    EXPECT_EQ(type, 0u);
    const uint8_t* bytes = static_cast<const uint8_t*>(data);
    return Bytes(bytes, bytes + size);
}

TEST(BitmapHeader, LittleEndianFieldsAndZeros) {
    uint8_t header[41];
    header[40] = 0xEE;
    android::WriteBitmapHeader(header, 0x01020304, 0x85060708, 0x44495658);
    const Bytes expected = {40, 0, 0, 0, 4, 3, 2, 1, 8, 7, 6, 0x85, 0, 0, 0, 0, 'X', 'V', 'I', 'D',
                            0,  0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,    0, 0, 0, 0, 0,   0,   0,   0};
    EXPECT_EQ(Bytes(header, header + 40), expected);
    EXPECT_EQ(header[40], 0xEE);
}

TEST(NeedsExtraDataStep, LooksAtSizeAndCompression) {
    const struct {
        size_t size;
        uint8_t biSize[4];
        const char* compression;
        bool needed;
    } rows[] = {
        {40, {40, 0, 0, 0}, "XVID", true},  {40, {0, 0, 0, 0x80}, "XVID", true},
        {60, {60, 0, 0, 0}, "divx", true},  {40, {40, 0, 0, 0}, "DIV5", true},
        {40, {40, 0, 0, 0}, "Div3", true},  {39, {40, 0, 0, 0}, "XVID", false},
        {40, {39, 0, 0, 0}, "XVID", false}, {40, {40, 0, 0, 0}, "DIV3", false},
        {40, {40, 0, 0, 0}, "div3", false}, {40, {40, 0, 0, 0}, "DIV4", false},
        {40, {40, 0, 0, 0}, "div4", false}, {4, {40, 0, 0, 0}, nullptr, false},
    };
    for (const auto& row : rows) {
        Bytes bytes(row.size, 0);
        std::copy(row.biSize, row.biSize + 4, bytes.begin());
        if (row.compression != nullptr) std::copy(row.compression, row.compression + 4, bytes.begin() + 16);
        EXPECT_EQ(android::NeedsExtraDataStep(bytes.data(), bytes.size()), row.needed)
            << row.size << ' ' << int{row.biSize[0]} << ' ' << (row.compression ? row.compression : "");
    }
    EXPECT_FALSE(android::NeedsExtraDataStep(nullptr, 0));
}

// Headers of the lengths, each beginning with its type; `setup` is the number of bytes of the last one.
Bytes VorbisPrivate(uint8_t identification, uint8_t comment, size_t setup) {
    Bytes bytes = {0x02, identification, comment};
    for (const auto& header : {std::pair<uint8_t, size_t>{1, identification}, {3, comment}, {5, setup}}) {
        if (header.second == 0) continue;
        bytes.push_back(header.first);
        for (size_t i = 1; i < header.second; ++i) bytes.push_back(static_cast<uint8_t>(0x40 + i));
    }
    return bytes;
}

TEST(Vorbis, KeepsTheFirstAndTheLastHeader) {
    const struct {
        uint8_t identification;
        uint8_t comment;
        size_t setup;
    } rows[] = {{30, 16, 40}, {30, 16, 1}, {1, 1, 1}, {30, 255, 1}, {255, 16, 300}};
    for (const auto& row : rows) {
        const Bytes bytes = VorbisPrivate(row.identification, row.comment, row.setup);
        EXPECT_TRUE(android::VorbisHeadersAccepted(bytes.data(), bytes.size(), nullptr));
        EXPECT_EQ(row.identification + row.comment >= 255, android::VorbisLacesAreLong(bytes.data(), 3));
        EXPECT_FALSE(android::VorbisLacesAreLong(bytes.data(), 2));
        sp<MetaData> meta = new MetaData;
        android::addVorbis2CodecInfo(meta, bytes.data(), bytes.size());
        const auto identification = bytes.begin() + 3;
        const auto setup = identification + row.identification + row.comment;
        EXPECT_EQ(Data(meta, android::kKeyVorbisInfo),
                  Bytes(identification, identification + row.identification));
        EXPECT_EQ(Data(meta, android::kKeyVorbisBooks), Bytes(setup, bytes.end()));
        EXPECT_EQ(Data(meta, android::kKeyESDS), (Bytes{0xDE, 0xAD}));
    }
}

// What the process says as it dies: the condition, the tag, and the message with the line fixed for the
// condition.
std::string Death(const std::string& condition, const char* line) {
    return "assert !(" + condition +
           ") / MatroskaExtExtractor / "
           "frameworks/av/media/libstagefright/corvo/extractor/matroska/MatroskaExtExtractor:" +
           line + " CHECK(" + condition + ") failed.\n";
}

struct BrokenRow {
    const char* name;
    Bytes bytes;
    const char* condition;
    const char* line;
};

// Every row passes all the checks before its own.
std::vector<BrokenRow> BrokenHeaders() {
    return {
        {"none", {}, "codecPrivateSize >= 3", "911"},
        {"two bytes", {2, 1}, "codecPrivateSize >= 3", "911"},
        {"three headers", {3, 1, 1, 1, 3, 5}, "codecPrivate[0] == 0x02", "914"},
        {"no setup header", VorbisPrivate(1, 1, 0), "codecPrivateSize > 3 + len1 + len2", "919"},
        {"laces only", {2, 0, 0}, "codecPrivateSize > 3 + len1 + len2", "919"},
        {"long headers", {2, 255, 255, 1}, "codecPrivateSize > 3 + len1 + len2", "919"},
        {"no identification header", {2, 1, 1, 9, 3, 5}, "codecPrivate[3] == 0x01", "921"},
        {"no comment header", {2, 1, 1, 1, 9, 5}, "codecPrivate[len1 + 3] == 0x03", "924"},
        {"the last one is no setup header",
         {2, 1, 1, 1, 3, 9},
         "codecPrivate[len1 + len2 + 3] == 0x05",
         "926"},
    };
}

TEST(VorbisDeathTest, BrokenHeadersEndTheProcess) {
    EXPECT_FALSE(android::VorbisHeadersAccepted(nullptr, 9, nullptr));
    for (const BrokenRow& row : BrokenHeaders()) {
        const char* condition = nullptr;
        EXPECT_FALSE(android::VorbisHeadersAccepted(row.bytes.data(), row.bytes.size(), &condition));
        EXPECT_STREQ(condition, row.condition) << row.name;
        sp<MetaData> meta = new MetaData;
        EXPECT_DEATH(android::addVorbis2CodecInfo(meta, row.bytes.data(), row.bytes.size()),
                     HasSubstr(Death(row.condition, row.line)))
            << row.name;
    }
}

}  // namespace
