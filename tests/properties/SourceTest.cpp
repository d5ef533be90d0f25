// Sources that fail, lie or are very large, and every order in which what they gave can be let go.
#include <host/AllocationLimit.h>
#include <host/PreadSource.h>
#include <media/stagefright/MediaBuffer.h>
#include <media/stagefright/MediaErrors.h>
#include <media/stagefright/MediaExtractor.h>
#include <media/stagefright/MediaSource.h>
#include <media/stagefright/MetaData.h>
#include <media/stagefright/foundation/AMessage.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "matroska/MatroskaFixture.h"
#include "properties/HeapMeter.h"
#include "properties/Measure.h"
#include "properties/Sanitizers.h"
#include "matroska/MatroskaExtExtractor.h"
#include "support/Oddities.h"

namespace testing_support {
namespace {

using android::MediaBuffer;

size_t UnitsOf(const sp<MediaExtractor>& extractor) {
    size_t units = 0;
    for (size_t i = 0; i < extractor->countTracks(); ++i)
        units += ReadAll(Started(extractor, i), nullptr, 10000).size();
    return units;
}

// A file that reads well from its own source, but not from one that misbehaves.
TEST(Source, WhatGetSizeSays) {
    const Bytes file = OddityNamed("chapters");
    const auto size = static_cast<off64_t>(file.size());
    const size_t all = UnitsOf(Open(file));
    ASSERT_LT(0u, all);
    const struct {
        const char* name;
        status_t status;
        off64_t size;
        bool isWhole;  // every unit comes; else only that it ends is asked for
    } rows[] = {
        {"fails", android::UNKNOWN_ERROR, size, true},
        {"fails with a size", android::UNKNOWN_ERROR, 3, true},
        {"0", android::OK, 0, false},
        {"negative", android::OK, -1, true},
        {"most negative", android::OK, INT64_MIN, true},
        {"one too small", android::OK, size - 1, false},
        {"half", android::OK, size / 2, false},
        {"one too large", android::OK, size + 1, true},
        {"a gigabyte", android::OK, 1 << 30, true},
        {"2^63-1", android::OK, INT64_MAX, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Faults faults;
        faults.sizeStatus = row.status;
        faults.claimSize = true;
        faults.claimedSize = row.size;
        const size_t units = UnitsOf(Open(file, faults));
        EXPECT_LE(units, all);
        EXPECT_TRUE(!row.isWhole || units == all) << units;
    }
}

// What the model keeps is bounded, also where getSize makes more possible.
TEST(Source, ASizeThatLiesCostsNoMemory) {
    const uint64_t claimed = 3ull << 30;
    const Document file =
        Write({EbmlHeader(),
               Segment({Info(1000),
                        Master(id::kTracks, {Mpeg2Track(1, {Private(Bytes(4)).DeclaredSize(claimed / 2)})}),
                        Cluster(0, {SimpleBlock(1, 0, kKeyFrame, Hex("AA")).DeclaredSize(claimed)})})});
    Faults faults;
    faults.claimSize = true;
    faults.claimedSize = static_cast<off64_t>(claimed);
    const sp<android::DataSource> source = new FaultySource(file.bytes, faults);
    const HeapMeter heap;
    EXPECT_EQ(0u, UnitsOf(Open(source)));
    EXPECT_LE(heap.Peak(), budget::kHeap);
}

TEST(Source, ReadsThatComeShort) {
    for (const Oddity& sample : Oddities(kDamaged)) {
        SCOPED_TRACE(sample.name);
        const sp<FaultySource> sound = new FaultySource(sample.bytes);
        const size_t all = UnitsOf(Open(sp<android::DataSource>(sound)));
        const uint64_t calls = sound->Reads();
        std::vector<Faults> faults;
        for (size_t most : {size_t{0}, size_t{1}, size_t{2}, size_t{7}}) {
            faults.emplace_back();
            faults.back().maxBytesPerCall = most;
        }
        for (uint64_t every = 1; every <= 20; ++every) {
            faults.emplace_back();
            faults.back().shortEvery = every;
        }
        for (size_t extra : {size_t{1}, size_t{1} << 20, SIZE_MAX / 4}) {
            faults.emplace_back();
            faults.back().claimedExtra = extra;
        }
        for (ssize_t error : {ssize_t{-1}, ssize_t{-1004}, ssize_t{INT32_MIN}}) {
            for (uint64_t offset = 0; offset < sample.bytes.size(); offset += 7) {
                faults.emplace_back();
                faults.back().errorFromOffset = offset;
                faults.back().error = error;
            }
        }
        for (const Faults& fault : faults) {
            const sp<FaultySource> source = new FaultySource(sample.bytes, fault);
            EXPECT_LE(UnitsOf(Open(sp<android::DataSource>(source))), all);
            ASSERT_LE(source->Reads(), 4 * calls + 4 * sample.bytes.size() + budget::kReads);
        }
    }
}

// A file with holes: what lies far behind is reached, and what is read is what was asked for.
TEST(Source, AFileOfManyGigabytes) {
    constexpr uint64_t kHole = (5ull << 30) + 12345;
    const char* folder = std::getenv("TMPDIR");
    std::string path = std::string(folder != nullptr ? folder : "/tmp") + "/hostile-XXXXXX";
    const int fd = mkstemp(&path[0]);
    ASSERT_LE(0, fd);
    const Bytes front = OpenSegment({SeekHead({}), Info(100000), Master(id::kTracks, {Mpeg2Track()}),
                                     Cluster(0, {SimpleBlock(1, 0, kKeyFrame, Pattern(9, 1))}),
                                     Bin(id::kVoid, {}).DeclaredSize(kHole).SizeWidth(8)});
    const Bytes back = Piece({Cluster(5000, {SimpleBlock(1, 0, kKeyFrame, Pattern(11, 2))})});
    // A block whose payload begins behind 4 GiB and whose size needs more than 32 bits.
    const Bytes large = Piece({Cluster(6000, {}).DeclaredSize((1ull << 33) + 100).SizeWidth(8)});
    const Bytes block = Concat(
        {Hex("E7820010"), Piece({Bin(id::kSimpleBlock, {}).DeclaredSize((1ull << 32) + 4).SizeWidth(8)}),
         Hex("81000080")});
    ASSERT_EQ(static_cast<ssize_t>(front.size()), pwrite(fd, front.data(), front.size(), 0));
    off64_t at = static_cast<off64_t>(front.size() + kHole);
    for (const Bytes& bytes : {back, large, block}) {
        ASSERT_EQ(static_cast<ssize_t>(bytes.size()), pwrite64(fd, bytes.data(), bytes.size(), at));
        at += static_cast<off64_t>(bytes.size());
    }
    ASSERT_EQ(0, ftruncate64(fd, at + (1ll << 33)));
    close(fd);
    {
        const HeapMeter heap;
        const sp<MediaExtractor> extractor =
            Open(sp<android::DataSource>(new android::host::PreadSource(path.c_str())));
        ASSERT_EQ(1u, extractor->countTracks());
        const sp<MediaSource> source = Started(extractor, 0);
        const std::vector<Unit> units = ReadAll(source);
        ASSERT_EQ(2u, units.size());  // the block of 4 GiB is none
        EXPECT_EQ(Pattern(9, 1), units[0].bytes);
        EXPECT_EQ(Pattern(11, 2), units[1].bytes);
        EXPECT_EQ(5000000, units[1].timeUs);
        MediaSource::ReadOptions options;
        options.setSeekTo(5000000);
        Unit unit;
        ASSERT_EQ(android::OK, ReadUnit(source, &unit, &options));
        EXPECT_EQ(units[1].bytes, unit.bytes);
        EXPECT_LE(heap.Peak(), budget::kHeap);
    }
    unlink(path.c_str());
}

// Extractor, two sources of one track, a source of another and a unit of each, let go in every order. Under
// the address sanitizer a use of what is gone ends the test.
TEST(Lifetime, EveryOrderOfLettingGo) {
    const Bytes file = OddityNamed("cues-in-front");
    const HeapMeter heap;
    size_t heldAfterFirst = 0;
    int order[] = {0, 1, 2, 3, 4, 5};
    do {
        sp<MediaExtractor> extractor = Open(file);
        sp<MediaSource> sources[] = {Started(extractor, 0), Started(extractor, 0), Started(extractor, 1)};
        MediaBuffer* buffers[2] = {nullptr, nullptr};
        ASSERT_EQ(android::OK, sources[0]->read(&buffers[0], nullptr));
        ASSERT_EQ(android::OK, sources[2]->read(&buffers[1], nullptr));
        for (const int step : order) {
            if (step == 0) extractor.clear();
            if (step >= 1 && step <= 3) {
                if (step == 2) sources[1]->stop();
                sources[step - 1].clear();
            }
            if (step >= 4) buffers[step - 4]->release();
        }
        if (heldAfterFirst == 0) heldAfterFirst = heap.Held() + 1;
    } while (std::next_permutation(std::begin(order), std::end(order)));
    EXPECT_LE(heap.Held(), heldAfterFirst + (64 << 10));
}

// A master of 60 KB is read in pieces that have grown to as much; what is kept of it is nothing.
TEST(Lifetime, AnOpenFileHoldsNoPieces) {
    const Document file =
        Write({EbmlHeader(), Segment({Master(id::kInfo, Elements(30000, Bin(id::kVoid, {}))),
                                      Master(id::kTracks, {Mpeg2Track()})})});
    const sp<android::DataSource> source = new FaultySource(file.bytes);
    UnitsOf(Open(source));
    const HeapMeter heap;
    const sp<MediaExtractor> extractor = Open(source);
    EXPECT_LE(size_t{MatroskaExtReader::Pieces::kMost}, heap.Peak());
    EXPECT_GT(size_t{MatroskaExtReader::Pieces::kMost}, heap.Held());
}

TEST(Lifetime, NothingIsLeftOfAFile) {
    for (const Oddity& sample : Oddities()) {
        SCOPED_TRACE(sample.name);
        if (sample.name == "vorbis_broken" || sample.name == "acm_vorbis") continue;  // they end the process
        for (const size_t most : {SIZE_MAX, size_t{30}}) {                            // bytes of a unit
            const android::host::ScopedAllocationLimit limit(most);
            UnitsOf(Open(sample.bytes));  // libraries keep something from the first time on
            const HeapMeter heap;
            constexpr size_t kTimes = 32, kLeast = 16;  // bytes of the smallest object
            for (size_t i = 0; i < kTimes; ++i) UnitsOf(Open(sample.bytes));
            EXPECT_GT(kTimes * kLeast, heap.Held());
        }
    }
}

TEST(Lifetime, TheSameTrackTwiceGivesTheSameUnits) {
    for (const Oddity& sample : Oddities(kDamaged)) {
        SCOPED_TRACE(sample.name);
        if (sample.Has(kHoldsAddresses)) continue;
        const sp<MediaExtractor> extractor = Open(sample.bytes);
        for (size_t i = 0; i < extractor->countTracks(); ++i) {
            const std::vector<Unit> alone = ReadAll(Started(extractor, i));
            if (!alone.empty() && alone[0].endUs >= 0) continue;  // events are there for one source only
            const sp<MediaSource> first = Started(extractor, i), second = Started(extractor, i);
            std::vector<Unit> units[2];
            for (bool more = true; more;) {
                more = false;
                for (int k = 0; k < 2; ++k) {
                    Unit unit;
                    if (ReadUnit(k == 0 ? first : second, &unit) != android::OK) continue;
                    units[k].push_back(unit);
                    more = true;
                }
            }
            EXPECT_EQ(alone, units[0]);
            EXPECT_EQ(alone, units[1]);
        }
    }
}

// No memory for a unit: that unit is lost, with a reason, and the next one comes, of the same block too.
TEST(Allocation, ARefusedUnitIsLostAlone) {
    const std::vector<Bytes> frames = {Bytes(10), Bytes(5000), Bytes(20)};
    const Document files[] = {
        OneTrack({SimpleBlock(1, 0, kKeyFrame, frames[0]), SimpleBlock(1, 40, 0, frames[1]),
                  SimpleBlock(1, 80, 0, frames[2])}),
        Write({EbmlHeader(), Segment({Master(id::kTracks, {Track(1, kAudioType, "A_VORBIS",
                                                                 {Private(Hex("020101 01 03 05"))})}),
                                      Cluster(0, {SimpleBlock(1, 0, kKeyFrame, Lacing::kXiph, frames)})})})};
    for (const Document& file : files) {
        const sp<MediaExtractor> extractor = Open(file.bytes);
        const sp<MediaSource> source = Started(extractor, 0);
        const android::host::ScopedAllocationLimit limit(1000);
        Unit unit;
        EXPECT_EQ(android::OK, ReadUnit(source, &unit));
        EXPECT_EQ(android::ERROR_END_OF_STREAM, ReadUnit(source, &unit));
        EXPECT_EQ(android::OK, ReadUnit(source, &unit));
        EXPECT_EQ(20u, unit.bytes.size());
        const auto& losses =
            static_cast<android::MatroskaExtExtractor*>(extractor.get())->File()->Losses.List();
        ASSERT_EQ(1u, losses.size());
        EXPECT_EQ(MatroskaExtReader::LossKind::kRefusedAllocation, losses[0].kind);
    }
}

#if !IS_SANITIZED
// Cue lists, the index, runs of block headers, laces and queued events of more than 4 KiB, of which one is
// refused, whichever it is: no more than one event is lost, and no unit. Nor is a unit where all are.
TEST(Allocation, OneRefusedBlockCostsOneEventAtMost) {
    constexpr size_t kMost = 4096, kEvents = 1500, kFrames = 400, kLaces = 200;
    Elements points,
        blocks = {SimpleBlock(2, 0, kKeyFrame, Lacing::kXiph, std::vector<Bytes>(kLaces, Bytes(1)))};
    for (uint64_t i = 0; i < 700; ++i) points.push_back(CuePoint(i, 1, "cluster"));
    for (size_t i = 0; i < kFrames; ++i) blocks.push_back(SimpleBlock(1, 0, kKeyFrame, Bytes(1)));
    for (size_t i = 0; i < kEvents; ++i) blocks.push_back(BlockGroup(3, 0, Text("e")));
    const Bytes file =
        Write({EbmlHeader(),
               Segment({Info(1000),
                        Master(id::kTracks,
                               {Mpeg2Track(1), Track(2, 2, "A_VORBIS", {Private(Hex("020101 01 03 05"))}),
                                TextTrack(3)}),
                        Master(id::kCues, points), Cluster(0, blocks).Label("cluster")})})
            .bytes;
    const sp<android::DataSource> source = new FaultySource(file, {});
    long asked = 1;
    for (long which = RefusedAbove::kAll; which < asked; ++which) {
        SCOPED_TRACE(which);
        const RefusedAbove refused(kMost, which);
        const sp<MediaExtractor> extractor = Open(source);
        ASSERT_EQ(3u, extractor->countTracks());
        size_t counts[3] = {};
        for (const size_t track : {1, 0, 2}) {
            const sp<MediaSource> units = Started(extractor, track);
            MediaBuffer* buffer = nullptr;
            for (; units->read(&buffer, nullptr) == android::OK; ++counts[track]) buffer->release();
        }
        EXPECT_EQ(kFrames, counts[0]);
        EXPECT_EQ(kLaces, counts[1]);
        EXPECT_LE(which == RefusedAbove::kAll ? 1 : kEvents - 1, counts[2]);
        asked = refused.Asked();
    }
    EXPECT_LT(10, asked);
}

// Of points out of order an index is made, or none.
TEST(Allocation, ARefusedIndexIsNone) {
    constexpr size_t kPoints = 700, kMost = 4096;
    Elements points;
    for (size_t i = 0; i < kPoints; ++i) points.push_back(CuePoint(kPoints - i, 1, "cluster"));
    const Document document =
        Write({EbmlHeader(), Segment({Master(id::kCues, points), Cluster(0, {}).Label("cluster")})});
    MatroskaExtReader::CMatroskaFile file(new FaultySource(document.bytes));
    ASSERT_EQ(MatroskaExtReader::kOk, file.Init());
    {
        const RefusedAbove refused(kMost);
        EXPECT_EQ(android::NO_MEMORY, file.BuildIndexForSync());
        EXPECT_EQ(0u, file.Index().size());
    }
    EXPECT_EQ(android::OK, file.BuildIndexForSync());
    EXPECT_EQ(kPoints, file.Index().size());
}

// No memory for what a block is kept in that needs a second look: it is lost, and reading ends there.
TEST(Allocation, ARefusedHeaderIsLost) {
    const Document file =
        OneTrack({SimpleBlock(1, 0, kKeyFrame, Bytes(9)), SimpleBlock(1, 40, kKeyFrame | 2, Hex("01 FF"))});
    const sp<MediaExtractor> extractor = Open(file.bytes);
    const sp<MediaSource> source = Started(extractor, 0);
    Unit unit;
    EXPECT_EQ(android::OK, ReadUnit(source, &unit));
    MediaBuffer* buffer = nullptr;
    status_t status = android::OK;
    {
        const RefusedAbove refused(sizeof(MatroskaExtReader::BlockGroup) - 1);
        status = source->read(&buffer, nullptr);
    }
    EXPECT_EQ(android::ERROR_END_OF_STREAM, status);
    EXPECT_EQ(nullptr, buffer);
}

// No memory for large blocks, of which each file chooses one: what was to hold it is lost or left as stored,
// the small unit behind it comes, and with memory again everything does.
TEST(Allocation, RefusedMemoryCostsOneUnitAtMost) {
    constexpr size_t kLarge = 100000, kMost = 70000;  // between two sizes of what grows
    const Bytes large(kLarge, 7), packed = Zlib(large);
    const Element deflated = Master(id::kContentEncodings, {Encoding(0, 0, 0)}),
                  vorbis = Track(2, kAudioType, "A_VORBIS", {Private(large)});
    const struct {
        const char* name;
        Document file;
        std::vector<size_t> sizes, sizesWithMemory;  // of the units
        long which = RefusedAbove::kAll;
    } rows[] = {
        {"unit",
         OneTrack({SimpleBlock(1, 0, kKeyFrame, large), SimpleBlock(1, 40, 0, Bytes(9))}),
         {9},
         {kLarge, 9}},
        {"inflated frame",
         OneTrack({SimpleBlock(1, 0, kKeyFrame, packed), SimpleBlock(1, 40, 0, Zlib(Bytes(9)))}, {deflated}),
         {packed.size(), 9},  // left as stored
         {kLarge, 9}},
        {"frame that is read whole",
         OneTrack({SimpleBlock(1, 0, kKeyFrame, large), SimpleBlock(1, 40, 0, Zlib(Bytes(9)))}, {deflated}),
         {9},
         {kLarge, 9}},
        {"codec private",
         OneTrack({SimpleBlock(1, 0, kKeyFrame, Bytes(8)), SimpleBlock(1, 40, 0, Bytes(9))},
                  {Private(large)}),
         {8, 9},
         {8, 9}},
        {"language",
         OneTrack({SimpleBlock(1, 0, kKeyFrame, Bytes(8))}, {Bin(id::kLanguage, Bytes(kLarge, 'a'))}),
         {8},
         {8}},
        {"language without its last byte",  // behind the reader's text and the framework's copy of it
         OneTrack({SimpleBlock(1, 0, kKeyFrame, Bytes(8))}, {Bin(id::kLanguage, Bytes(kLarge, 'a'))}),
         {8},
         {8},
         2},
        {"AAC's name",  // behind the reader's text: without it nobody can tell the profile
         Write({EbmlHeader(),
                Segment({Master(id::kTracks,
                                {Mpeg2Track(1), Track(2, kAudioType, "A_AAC" + std::string(kLarge, 'a'))}),
                         Cluster(0, {SimpleBlock(1, 0, kKeyFrame, Bytes(8))})})}),
         {8},
         {8},
         1},
        {"Vorbis headers",
         Write({EbmlHeader(), Segment({Master(id::kTracks, {Mpeg2Track(1), vorbis}),
                                       Cluster(0, {SimpleBlock(1, 0, kKeyFrame, Bytes(8))})})}),
         {8},
         {}},
    };
    const auto sizesOf = [](const sp<android::DataSource>& bytes) {
        std::vector<size_t> sizes;
        const sp<MediaExtractor> extractor = Open(bytes);
        EXPECT_EQ(1u, extractor->countTracks());
        const sp<MediaSource> source = Started(extractor, 0);
        for (int reads = 0; reads < 4; ++reads) {
            MediaBuffer* buffer = nullptr;
            if (source->read(&buffer, nullptr) != android::OK) continue;
            sizes.push_back(buffer->range_length());
            buffer->release();
        }
        return sizes;
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const sp<android::DataSource> source = new FaultySource(row.file.bytes, {});
        std::vector<size_t> sizes;
        {
            const RefusedAbove refused(kMost, row.which);
            sizes = sizesOf(source);
        }
        EXPECT_EQ(row.sizes, sizes);
        if (row.sizesWithMemory.empty()) continue;  // the assertion on Vorbis headers that are none
        EXPECT_EQ(row.sizesWithMemory, sizesOf(source));
    }
}
#endif

}  // namespace
}  // namespace testing_support
