// Blocks, their lacing and their encodings, and codec configuration one byte short.
#include <media/stagefright/MediaBuffer.h>
#include <media/stagefright/MediaExtractor.h>
#include <media/stagefright/MediaSource.h>
#include <media/stagefright/MetaData.h>
#include <media/stagefright/foundation/AMessage.h>

#include <algorithm>

#include "properties/HeapMeter.h"
#include "properties/Measure.h"
#include "matroska/PluginExports.h"
#include "support/FaultySource.h"
#include "support/Listing.h"

namespace testing_support {
namespace {

const Element kBlock = SimpleBlock(1, 0, kKeyFrame, Hex("AABBCC"));

Element Encodings(const Elements& encodings) {
    return Master(id::kContentEncodings, encodings);
}
// A block whose bytes behind the flags are said here; the next block is sound.
Content Laces(Lacing lacing, const Bytes& payload, Elements trackParts = {}) {
    const auto bits = static_cast<uint8_t>(static_cast<int>(lacing) << 1);
    return Whole(OneTrack({SimpleBlock(1, 0, kKeyFrame | bits, payload), kBlock}, std::move(trackParts)));
}
Element StrippedHeader(const Bytes& header) {
    return Encodings({Encoding(0, 0, 3, header)});
}
Element Deflated() {
    return Encodings({Encoding(0, 0, 0)});
}

TEST(Blocks, FramesThatClaimTheRestOfALargeFile) {
    constexpr uint64_t kRest = 8 << 20;
    // 256 sizes that each reach to the end of the block, of a track whose frames are read one by one.
    const auto claims = [](const Bytes& sizes, const Element& trackPart) {
        const Bytes front =
            Concat({OpenSegment({Info(1000), Master(id::kTracks, {Mpeg2Track(1, {trackPart})}),
                                 Master(id::kCluster, {}).UnknownSize(8)}),
                    Piece({Bin(id::kSimpleBlock, {}).DeclaredSize(5 + sizes.size() + kRest).SizeWidth(8)}),
                    Hex("81 0000 86"), Hex("FF"), sizes});
        return Content{Stretch{front}, Stretch{Bytes(1, 0), kRest}};
    };
    Bytes unknown(255, 0xFF), whole;
    for (int i = 0; i < 255; ++i) whole = Concat({whole, i == 0 ? Vint(kRest - 4096) : Hex("BF")});
    const Row rows[] = {
        {"unknown sizes, inflated", claims(unknown, Deflated()), "1 track, 0 units; bad_lacing 1"},
        {"each the rest, inflated", claims(whole, Deflated()), "1 track, 0 units; bad_lacing 1"},
        {"each the rest, with headers", claims(whole, StrippedHeader(Hex("AA"))),
         "1 track, 0 units; bad_lacing 1"},
    };
    CheckRows(rows);
}

TEST(Blocks, StrippedHeaders) {
    const Bytes frames(256, 7);
    const Bytes manyFrames = Concat({Hex("FE"), Bytes(255, 7)});
    Elements hundred;
    for (uint64_t i = 0; i < 100; ++i) hundred.push_back(Encoding(i, 0, 3, Hex("AA")));
    const Row rows[] = {
        {"16 MB, 255 frames", Laces(Lacing::kFixed, manyFrames, {StrippedHeader(Bytes(16 << 20))}),
         "1 track, 1 unit; elements_too_large 1"},
        {"64 KB, 255 frames", Laces(Lacing::kFixed, manyFrames, {StrippedHeader(Bytes(64 << 10))}),
         "1 track, 2 units"},
        {"4 KB, 255 frames", Laces(Lacing::kFixed, manyFrames, {StrippedHeader(Bytes(4 << 10))}),
         "1 track, 2 units"},
        {"a hundred encodings", Laces(Lacing::kNone, frames, {Encodings(hundred)}), "1 track, 2 units"},
        {"of no byte", Laces(Lacing::kNone, frames, {Encodings({Encoding(0, 0, 3)})}), "1 track, 2 units"},
        {"header of 4 GiB",
         Laces(Lacing::kNone, frames,
               {Encodings(
                   {Master(id::kContentEncoding,
                           {Master(id::kContentCompression,
                                   {Uint(id::kContentCompAlgo, 3),
                                    Bin(id::kContentCompSettings, Hex("AA")).DeclaredSize(1ull << 32)})})})}),
         "1 track, 2 units; beyond_source 1"},
    };
    CheckRows(rows);
}

TEST(Blocks, MoreEncodingsThanAreKept) {
    const Bytes plain(200, 7);
    Elements thousand;
    for (uint64_t i = 0; i < 1100; ++i) thousand.push_back(Encoding(1100 - i, 0, 0));
    CheckRow({"eleven hundred", Laces(Lacing::kNone, Zlib(plain), {Encodings(thousand)}),
              "1 track, 2 units; reader_limit 76, bad_compression 2"});
}

TEST(Blocks, ZlibBombs) {
    const auto bomb = [](uint64_t size) { return Zlib(Bytes(static_cast<size_t>(size), 0)); };
    const Bytes sixtyFour = bomb(64 << 20);
    Bytes truncated = sixtyFour, corrupt = sixtyFour;
    truncated.resize(truncated.size() / 2);
    corrupt[corrupt.size() / 2] ^= 0xFF;
    // What a stream of many 64 MB pieces would inflate to is found out by inflating it as far as allowed.
    const Bytes endless = [] {
        Bytes head = Hex("789C");
        // One stored block of no byte after the other, and none the last.
        const Bytes empty = Hex("00 0000 FFFF");
        for (int i = 0; i < 20000; ++i) head.insert(head.end(), empty.begin(), empty.end());
        return head;
    }();
    const auto one = [](const Bytes& frame) { return Laces(Lacing::kNone, frame, {Deflated()}); };
    const Row rows[] = {
        {"3 MB", one(bomb(3 << 20)), "1 track, 2 units; bad_compression 1"},
        {"5 MB from 5 KB", one(bomb(5 << 20)), "1 track, 2 units; bad_compression 1"},
        {"64 MB from 64 KB", one(sixtyFour), "1 track, 2 units; bad_compression 1"},
        {"64 MB, five times",
         Laces(Lacing::kFixed,
               Concat({Hex("04"),
                       [&] {
                           Bytes all;
                           for (int i = 0; i < 5; ++i) all = Concat({all, sixtyFour});
                           return all;
                       }()}),
               {Deflated()}),
         "1 track, 2 units; bad_compression 2"},
        {"truncated", one(truncated), "1 track, 2 units; bad_compression 1"},
        {"corrupt", one(corrupt), "1 track, 2 units; bad_compression 2"},
        {"no byte", one({}), "1 track, 2 units; bad_compression 2"},
        {"one byte", one(Hex("78")), "1 track, 2 units; bad_compression 1"},
        {"header only", one(Hex("789C")), "1 track, 2 units; bad_compression 1"},
        {"wants a dictionary", one(Hex("78BB 00000001 0300 00000001")),
         "1 track, 2 units; bad_compression 2"},
        {"a hundred kilobytes that say nothing", one(endless), "1 track, 2 units; bad_compression 1"},
    };
    CheckRows(rows);
    // Tracks that look into their first frame inflate it while the file is opened.
    const Element inspected =
        Track(1, kVideoType, "V_MS/VFW/FOURCC", {Private(BitmapHeader("XVID")), Deflated()});
    const Element headers = Track(1, kVideoType, "V_MS/VFW/FOURCC",
                                  {Private(BitmapHeader("XVID")), StrippedHeader(Bytes(1 << 20))});
    const auto inspect = [](const Element& track, const Element& block) {
        return Whole(
            {EbmlHeader(), Segment({Info(1000), Master(id::kTracks, {track}), Cluster(0, {block})})});
    };
    const Row opening[] = {
        {"64 MB in an inspected frame", inspect(inspected, SimpleBlock(1, 0, kKeyFrame, sixtyFour)),
         "1 track, 1 unit; bad_compression 1"},
        {"255 headers in front of inspected frames",
         inspect(headers, SimpleBlock(1, 0, kKeyFrame | 4, Concat({Hex("FE"), Bytes(255, 7)}))),
         "1 track, 1 unit; elements_too_large 1"},
    };
    CheckRows(opening);
}

// Memory that a frame's failure costs must come back, however many frames fail.
TEST(Blocks, AHundredThousandCorruptFramesWithoutGrowth) {
    constexpr size_t kFrames = 100000;
    const Bytes front = OpenSegment({Info(1000), Master(id::kTracks, {Mpeg2Track(1, {Deflated()})}),
                                     Master(id::kCluster, {}).UnknownSize(8)});
    const Bytes block = Piece({SimpleBlock(1, 0, kKeyFrame, Hex("789C BAD0BAD0BAD0BAD0"))});
    const android::sp<HostileSource> source = new HostileSource({Stretch{front}, Stretch{block, kFrames}});
    const android::sp<android::MediaExtractor> extractor = android::createInstance(source, nullptr);
    const android::sp<android::MediaSource> track = extractor->getTrack(0);
    track->start(nullptr);
    size_t units = 0;
    const auto read = [&](size_t upTo) {
        android::MediaBuffer* buffer = nullptr;
        for (; units < upTo && track->read(&buffer, nullptr) == android::OK; ++units) buffer->release();
    };
    read(kFrames / 2);  // by then every cache is as large as it gets
    const HeapMeter heap;
    read(kFrames);
    EXPECT_EQ(kFrames, units);
    EXPECT_LE(heap.Held(), 64u << 10);
}

// Events of one track that nothing separates become one event, but no event without end.
TEST(Blocks, AMergedEventGrowsOnlySoFar) {
    constexpr int kEvents = 3000;
    Elements blocks = {SimpleBlock(1, 0, kKeyFrame, Hex("AA"))};
    for (int i = 0; i < kEvents; ++i) {
        blocks.push_back(
            BlockGroup(2, 1, Text("0,0,Default,,0,0,0,,a line of forty characters, or nearly so")));
    }
    blocks.push_back(SimpleBlock(1, 40, 0, Hex("AB")));
    const Document file = Write(
        {EbmlHeader(), Segment({Info(1000), Master(id::kTracks, {Mpeg2Track(1), TextTrack(2, "S_TEXT/ASS")}),
                                Cluster(0, blocks)})});
    const android::sp<android::DataSource> source = new FaultySource(file.bytes);
    const std::vector<Unit> events = ReadSubtitles(android::createInstance(source, nullptr), 0, 1);
    size_t lines = 0;
    for (const Unit& event : events) {
        EXPECT_LE(event.bytes.size(), 64u << 10);
        lines += 1 + static_cast<size_t>(std::count(event.bytes.begin(), event.bytes.end(), '\n'));
    }
    EXPECT_EQ(static_cast<size_t>(kEvents), lines);
}

}  // namespace
}  // namespace testing_support
