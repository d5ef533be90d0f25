// The plug-in as the device's 32-bit process has it: sizes and layouts that its callers rely on, symbols with
// 32-bit types in their names, addresses of four bytes, and positions that stay 64 bits wide.
#include <utils/Errors.h>
#include <utils/SortedVector.h>
#include <utils/String8.h>
#include <utils/Vector.h>
#include <host/ExtractorPlugin.h>
#include <media/stagefright/MediaBuffer.h>
#include <media/stagefright/MediaErrors.h>
#include <media/stagefright/MediaSource.h>
#include <media/stagefright/MetaData.h>

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "support/FaultySource.h"
#include "support/Listing.h"

namespace testing_support {
namespace {

using namespace android;

static_assert(sizeof(void*) == 4 && sizeof(size_t) == 4 && sizeof(long) == 4, "a 32-bit process");
static_assert(sizeof(off64_t) == 8 && alignof(int64_t) == 8, "positions have 64 bits");
static_assert(sizeof(status_t) == 4 && sizeof(ssize_t) == 4, "results have 32 bits");
// What a caller allocates or copies, and the plug-in looks into.
static_assert(sizeof(MediaSource::ReadOptions) == 40,
              "options: 4, 8, 4, 8 and 1 bytes, each at its alignment");
static_assert(sizeof(String8) == 4 && sizeof(sp<MetaData>) == 4 && sizeof(wp<MetaData>) == 8, "handles");
static_assert(sizeof(Vector<int>) == 20 && sizeof(SortedVector<String8>) == 20,
              "a virtual table, storage, count, flags and item size");

host::ExtractorPlugin Load() {
    host::ExtractorPlugin plugin;
    std::string error;
    EXPECT_TRUE(host::ExtractorPlugin::Load(PLUGIN_PATH, &plugin, &error)) << error;
    return plugin;
}

sp<MediaExtractor> Open(const Document& document, Faults faults = {}) {
    return Load().open(new FaultySource(document.bytes, faults), nullptr);
}

Document OneTrackFile(const Element& track, const Elements& blocks) {
    return Write({EbmlHeader(), Segment({Info(1000), Master(id::kTracks, {track}), Cluster(0, blocks)})});
}

TEST(Arm32, NamesCarryThe32BitTypes) {
    void* plugin = dlopen(PLUGIN_PATH, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(plugin, nullptr) << dlerror();
    const struct {
        const char* symbol;
        bool isThere;
    } rows[] = {
        {"_ZN7android23AddESDSFromSpecificInfoERKNS_2spINS_8MetaDataEEEPKvj", true},  // unsigned int
        {"_ZN7android11MediaBufferC1Ej", true},                                       // size_t
        {"_ZN7android11MediaBufferC1Em", false},
        {"_ZN7android8MetaData8setInt64Ejx", true},  // int64_t
        {"_ZN7android8MetaData8setInt64Ejl", false},
        {"_ZN7android11MediaBuffer9set_rangeEjj", true},
        {"_ZN7android8MetaData7setDataEjjPKvj", true},
    };
    for (const auto& row : rows) EXPECT_EQ(dlsym(plugin, row.symbol) != nullptr, row.isThere) << row.symbol;
}

// The record in front of a RealMedia audio frame holds the frame's own address, which four bytes can.
TEST(Arm32, ARealMediaRecordHoldsATrueAddress) {
    const Bytes first = Pattern(5, 1), second = Pattern(7, 2);
    const auto extractor =
        Open(OneTrackFile(Track(1, 2, "A_REAL/COOK", {Audio(44100, 2)}),
                          {SimpleBlock(1, 300, kKeyFrame, Lacing::kXiph, {first, second})}));
    ASSERT_EQ(extractor->countTracks(), 1u);
    const sp<MediaSource> source = extractor->getTrack(0);
    source->start(nullptr);
    MediaBuffer* buffer = nullptr;
    ASSERT_EQ(source->read(&buffer, nullptr), OK);
    ASSERT_EQ(buffer->range_length(), 16 + first.size() + 16 + second.size());
    const uint8_t* record = static_cast<const uint8_t*>(buffer->data()) + buffer->range_offset();
    for (const Bytes& frame : {first, second}) {
        uint32_t time;
        uint16_t size;
        const uint8_t* address;
        std::memcpy(&time, record, sizeof(time));
        std::memcpy(&size, record + 10, sizeof(size));
        std::memcpy(&address, record + 12, sizeof(address));
        EXPECT_EQ(time, 300u);
        EXPECT_EQ(size, frame.size());
        ASSERT_EQ(address, record + 16);
        EXPECT_EQ(Bytes(address, address + size), frame);
        record = address + size;
    }
    buffer->release();
}

// Sizes and positions beyond 32 bits are seen as they are, not by their low half.
TEST(Arm32, SizesBeyond32BitsAreNotTruncated) {
    const uint64_t beyond = uint64_t{1} << 32;
    const Bytes frame = Hex("010203");
    const struct {
        const char* what;
        Document file;
        size_t tracks, units;
    } rows[] = {
        {"a block whose low half fits",
         OneTrackFile(Track(1, 1, "V_MPEG2"),
                      {SimpleBlock(1, 0, kKeyFrame, frame),
                       Bin(id::kSimpleBlock, Hex("81000080 AA")).DeclaredSize(beyond + 5)}),
         1, 1},
        {"a codec private whose low half fits",
         OneTrackFile(Track(1, 1, "V_MPEG2", {Bin(id::kCodecPrivate, frame).DeclaredSize(beyond + 3)}),
                      {SimpleBlock(1, 0, kKeyFrame, frame)}),
         1, 1},
        {"a track number whose low half is another's",
         OneTrackFile(Track(1, 1, "V_MPEG2"),
                      {SimpleBlock(beyond + 1, 0, kKeyFrame, frame), SimpleBlock(1, 1, kKeyFrame, frame)}),
         1, 1},
    };
    for (const auto& row : rows) {
        const auto extractor = Open(row.file);
        ASSERT_EQ(extractor->countTracks(), row.tracks) << row.what;
        const sp<MediaSource> source = extractor->getTrack(0);
        source->start(nullptr);
        EXPECT_EQ(ReadAll(source).size(), row.units) << row.what;
    }
}

}  // namespace
}  // namespace testing_support
