// Files of one kind at two sizes, one ten times the other: what opening asks of the source and of the heap
// may grow with the size, not with its square. Each family is also held to the budgets of any file.
#include <media/stagefright/MediaBuffer.h>
#include <media/stagefright/MediaExtractor.h>
#include <media/stagefright/MediaSource.h>
#include <media/stagefright/foundation/AMessage.h>

#include "properties/Measure.h"
#include "matroska/MatroskaExtExtractor.h"
#include "matroska/PluginExports.h"
#include "matroska/reader/Limits.h"

namespace testing_support {
namespace {

// A family's member with `count` of whatever it repeats.
struct Family {
    const char* name;
    Content (*make)(uint64_t count);
    uint64_t small;  // and ten times as many
};

constexpr uint64_t kFactor = 10;
// Room for what does not grow: the constant parts of both sides.
constexpr uint64_t kSlackReads = 256, kSlackBytes = 64 << 10;

// Like Repeated, with more behind it.
Content Repeated(const Bytes& front, const Bytes& piece, uint64_t count, const Bytes& back = {}) {
    return {Stretch{front}, Stretch{piece, count}, Stretch{back}};
}

// The header of a master that holds `bytes` bytes of what is written behind it.
Element Holding(uint32_t elementId, uint64_t bytes) {
    return Master(elementId, {}).DeclaredSize(bytes).SizeWidth(8);
}

Content InMaster(uint32_t elementId, const Bytes& piece, uint64_t count, const Elements& before = {}) {
    Elements children = before;
    children.push_back(Holding(elementId, piece.size() * count));
    return Repeated(OpenSegment(children), piece, count);
}

Bytes EmptyVoid() {
    return Hex("EC80");
}

// Tracks that look for their configuration in the first frames, of which there are none.
Bytes InspectedTracks(size_t count, const char* compression) {
    Elements tracks;
    for (size_t i = 1; i <= count; ++i) {
        tracks.push_back(Track(i, kVideoType, "V_MS/VFW/FOURCC", {Private(BitmapHeader(compression))}));
    }
    return Piece({Master(id::kTracks, tracks)});
}

const Bytes& SixtyFourInspectedTracks() {
    static const Bytes tracks = InspectedTracks(64, "H264");
    return tracks;
}

// Seek entries for Cues, Chapters and Attachments and a further SeekHead: elements that each cover the rest
// of the Segment, their headers one behind the other.
Content Overlapping(uint64_t count) {
    const Bytes entries = Piece({SeekHead({})});
    const uint32_t kinds[] = {id::kSeekHead, id::kCues, id::kChapters, id::kAttachments};
    Elements seeks;
    Elements covers;
    uint64_t rest = EmptyVoid().size() * count;
    for (const uint32_t kind : kinds) covers.push_back(Holding(kind, 0));
    constexpr uint64_t kCoverHeader = 12;
    // Info twice, so that with the SeekHead three elements of the head were read.
    const Elements head = {Info(1000), Info(1000)};
    constexpr uint64_t kSeekHeadSize = 5 + 4 * 21;
    const uint64_t firstCover =
        kSeekHeadSize + 2 * Piece({Info(1000)}).size() + 12;  // behind a Void's header
    Elements segment;
    for (size_t i = 0; i < 4; ++i) {
        seeks.push_back(Master(id::kSeek, {IdValue(id::kSeekId, kinds[i]),
                                           Uint(id::kSeekPosition, firstCover + i * kCoverHeader, 8)}));
    }
    segment.push_back(Master(id::kSeekHead, seeks));
    segment.insert(segment.end(), head.begin(), head.end());
    // The walk of the head goes over the covers as over one Void, and on through the rest.
    segment.push_back(Holding(id::kVoid, 4 * kCoverHeader).SizeWidth(8));
    Bytes front = OpenSegment(segment);
    for (size_t i = 0; i < 4; ++i) {
        const Bytes cover = Piece({Holding(kinds[i], rest + (3 - i) * kCoverHeader)});
        front.insert(front.end(), cover.begin(), cover.end());
    }
    return Repeated(front, EmptyVoid(), count, SixtyFourInspectedTracks());
}

// Many Segments, each of which says that its Cues lie far in front of it, where empty Cues and Voids are.
Content BackwardCues(uint64_t count) {
    const Bytes target =
        Concat({Piece({Master(id::kCues, {})}), Hex("EC80EC80EC80EC80EC80EC80EC80EC80EC80EC80")});
    const uint64_t distance = 0 - (target.size() * count - target.size() * 2);
    const Bytes segment =
        Piece({Segment({Master(id::kSeekHead, {Master(id::kSeek, {IdValue(id::kSeekId, id::kCues),
                                                                  Uint(id::kSeekPosition, distance, 8)})}),
                        Master(id::kInfo, {}), Master(id::kInfo, {})})});
    return {Stretch{Piece({EbmlHeader()})}, Stretch{target, count}, Stretch{segment, count}};
}

const Family kFamilies[] = {
    {"empty Voids in the Segment", [](uint64_t n) { return Repeated(OpenSegment({}), EmptyVoid(), n); },
     100000},
    {"empty Voids in front of tracks that look for frames",
     [](uint64_t n) { return Repeated(OpenSegment({}), EmptyVoid(), n, SixtyFourInspectedTracks()); },
     100000},
    {"tracks that look for frames among others' blocks",
     [](uint64_t n) {
         return Repeated(
             Concat({OpenSegment({}), SixtyFourInspectedTracks(), Piece({Holding(id::kCluster, 10 * n)})}),
             Piece({SimpleBlock(99, 0, kKeyFrame, Hex("01020304"))}), n);
     },
     20000},
    {"tracks that look for frames, one for each 90 bytes",
     [](uint64_t n) {
         const Bytes entry =
             Piece({Track(99, kVideoType, "V_MS/VFW/FOURCC", {Private(BitmapHeader("H264"))})});
         return Repeated(Concat({OpenSegment({}), Piece({Holding(id::kTracks, entry.size() * n)})}), entry, n,
                         Piece({Cluster(0, Elements(static_cast<size_t>(n),
                                                    SimpleBlock(98, 0, kKeyFrame, Hex("0102"))))}));
     },
     100},
    {"TrackEntries", [](uint64_t n) { return InMaster(id::kTracks, Piece({Track(7, 1, "V_X")}), n); },
     100000},
    {"Tracks",
     [](uint64_t n) {
         return Repeated(OpenSegment({}), Piece({Master(id::kTracks, {Raw(Hex("EC80"))})}), n);
     },
     100000},
    {"SeekHeads",
     [](uint64_t n) {
         return Repeated(OpenSegment({}), Piece({Master(id::kSeekHead, {Raw(Hex("EC80"))})}), n);
     },
     100000},
    {"Cues",
     [](uint64_t n) { return Repeated(OpenSegment({}), Piece({Master(id::kCues, {Raw(Hex("EC80"))})}), n); },
     100000},
    {"Infos", [](uint64_t n) { return Repeated(OpenSegment({}), Piece({Info(5)}), n); }, 100000},
    {"Seek entries",
     [](uint64_t n) { return InMaster(id::kSeekHead, Piece({Master(id::kSeek, {Raw(Hex("53AC80"))})}), n); },
     100000},
    {"CuePoints", [](uint64_t n) { return InMaster(id::kCues, Hex("BB82B380"), n); }, 100000},
    {"CueTrackPositions", [](uint64_t n) { return InMaster(id::kCues, Hex("BB84B782F780"), n); }, 100000},
    {"positions of one CuePoint",
     [](uint64_t n) {
         const Bytes point = Piece({Holding(id::kCuePoint, 4 * n)});
         return Repeated(Concat({OpenSegment({Holding(id::kCues, point.size() + 4 * n)}), point}),
                         Hex("B782F780"), n);
     },
     100000},
    {"CueReferences", [](uint64_t n) { return InMaster(id::kCues, Hex("BB88B786F780DB829680"), n); }, 100000},
    {"Clusters without a Timecode",
     [](uint64_t n) { return Repeated(OpenSegment({}), Hex("1F43B67580"), n); }, 100000},
    {"Clusters", [](uint64_t n) { return Repeated(OpenSegment({}), Piece({Cluster(0, {})}), n); }, 100000},
    {"Clusters of unknown size",
     [](uint64_t n) { return Repeated(OpenSegment({}), Piece({Cluster(0, {}).UnknownSize(1)}), n); }, 100000},
    {"empty Voids in a Cluster of unknown size",
     [](uint64_t n) {
         return Repeated(OpenSegment({Master(id::kCluster, {}).UnknownSize(1)}), EmptyVoid(), n);
     },
     100000},
    {"blocks of no byte in a Cluster of unknown size",
     [](uint64_t n) {
         return Repeated(OpenSegment({Info(1), Master(id::kTracks, {Mpeg2Track()}),
                                      Master(id::kCluster, {}).UnknownSize(1)}),
                         Hex("A380"), n);
     },
     100000},
    {"Segments", [](uint64_t n) { return Repeated(Piece({EbmlHeader()}), Piece({Segment({Info(1)})}), n); },
     20000},
    {"Segments that look for their Cues far in front", BackwardCues, 2000},
    {"EBML headers", [](uint64_t n) { return Repeated(Piece({EbmlHeader()}), Piece({EbmlHeader()}), n); },
     20000},
    {"elements that each cover the rest", Overlapping, 50000},
    {"integers of size 0", [](uint64_t n) { return InMaster(id::kInfo, Hex("2AD7B180"), n); }, 100000},
    {"integers of 32 KB each",
     [](uint64_t n) {
         return Repeated(OpenSegment({}), Piece({Master(id::kInfo, {Raw(Hex("2AD7B1208000"))})}), n,
                         Piece({Bin(id::kVoid, Bytes(1 << 16))}));
     },
     100000},
    {"strings that each claim 16 KB",
     [](uint64_t n) {
         return Repeated(OpenSegment({}), Piece({Master(id::kInfo, {Raw(Hex("7BA97F00"))})}), n);
     },
     50000},
    {"resynchronisations that succeed one byte on",
     [](uint64_t n) {
         return Repeated(OpenSegment({}), Concat({Hex("114D9B7400"), Bytes(0x3400, 0x80)}), n);
     },
     200},
    {"bytes that begin nothing", [](uint64_t n) { return Repeated(OpenSegment({}), Bytes(1, 0), n); },
     400000},
    {"bytes that begin everything", [](uint64_t n) { return Repeated(OpenSegment({}), Bytes(1, 0x10), n); },
     400000},
};

// With HOSTILE_FIGURES set, a line of a table: name, bytes, reads and bytes read a byte, MiB of heap.
void Print(const char* name, const Content& content, const Cost& cost) {
    if (std::getenv("HOSTILE_FIGURES") == nullptr) return;
    const auto n = static_cast<double>(SizeOf(content));
    printf("| %s | %.0f | %.2f | %.2f | %.1f |\n", name, n, static_cast<double>(cost.reads) / n,
           static_cast<double>(cost.bytesRead) / n, static_cast<double>(cost.heap) / (1 << 20));
}

TEST(Families, CostGrowsWithTheSize) {
    for (const Family& family : kFamilies) {
        SCOPED_TRACE(family.name);
        const Outcome few = OpenHostile(family.make(family.small));
        const Content large = family.make(family.small * kFactor);
        const Outcome many = OpenHostile(large);
        Print(family.name, large, many.opening);
        EXPECT_LE(many.opening.reads, kFactor * few.opening.reads + kSlackReads);
        EXPECT_LE(many.opening.bytesRead, kFactor * few.opening.bytesRead + kSlackBytes);
        EXPECT_LE(many.sniffing.reads, kFactor * few.sniffing.reads + kSlackReads);
    }
}

// Files of tens of megabytes, of which as much is kept as ever will be: the budget that does not grow.
TEST(Opening, WhatIsKeptHasAnEnd) {
    constexpr uint64_t kMany = 3000000;
    const Bytes point = Hex("BB88B786F780DB829680");  // with one position that has one reference
    constexpr uint64_t kLargest = 31 << 20;
    const Bytes parts = Piece({Uint(id::kTrackNumber, 1), Uint(id::kTrackType, kVideoType),
                               Str(id::kCodecId, "V_MPEG2"), Holding(id::kCodecPrivate, kLargest)});
    const Bytes entry = Piece({Holding(id::kTrackEntry, parts.size() + kLargest)});
    const Content files[] = {
        {Stretch{OpenSegment({Info(1000), Holding(id::kCues, point.size() * kMany)})}, Stretch{point, kMany},
         Stretch{Piece({Holding(id::kTracks, entry.size() + parts.size() + kLargest)})}, Stretch{entry},
         Stretch{parts}, Stretch{Bytes(1, 7), kLargest}},
        {Stretch{OpenSegment({})}, Stretch{Piece({Master(id::kSeekHead, {Raw(Hex("EC80"))})}), kMany * 3}},
        {Stretch{OpenSegment({})}, Stretch{Piece({Master(id::kCues, {Raw(Hex("EC80"))})}), kMany * 3}},
    };
    for (const Content& file : files) {
        const Outcome outcome = OpenHostile(file);
        EXPECT_NE(std::string(), outcome.losses);
        Print("at the limits", file, outcome.opening);
    }
}

// Groups whose codec state each claims a megabyte of what follows.
TEST(Reading, GroupsThatClaimWhatFollowsAreReadOnce) {
    const auto file = [](uint64_t count) {
        const Bytes block = Piece({Bin(id::kBlock, BlockBytes(1, 0, 0, Hex("AA")))});
        const Bytes group = Piece({Master(
            id::kBlockGroup, {Raw(block), Bin(id::kCodecState, {}).DeclaredSize(1 << 20).SizeWidth(4)})});
        return Content{Stretch{OpenSegment({Info(1000), Master(id::kTracks, {Mpeg2Track()}),
                                            Master(id::kCluster, {}).UnknownSize(8)})},
                       Stretch{group, count}, Stretch{Hex("EC18000000")}, Stretch{Bytes(1), 8 << 20}};
    };
    const Outcome few = ThrowHostile(file(400)), many = ThrowHostile(file(4000));
    EXPECT_EQ("1 track, 4000 units", many.Text());
    EXPECT_LE(many.reading.bytesRead, kFactor * few.reading.bytesRead + kSlackBytes);
    EXPECT_LE(many.reading.bytesRead, 8u << 20);
}

// Eight tracks are read and then sought about in, eight times each: a lace number is read in pieces, and a
// search for what follows damage or for the first Cluster is made once.
TEST(Reading, WhatIsNoUnitCostsFewReadsHoweverOftenItIsMet) {
    constexpr uint64_t kMany = 1000000, kMostReads = 3000;
    Elements tracks;
    for (size_t i = 1; i <= 8; ++i) tracks.push_back(Mpeg2Track(i));
    const Elements head = {Info(100000), Master(id::kTracks, tracks)};
    const Bytes front = OpenSegment(head), lacing = Hex("8100020201"),
                unit = Piece({Cluster(0, {SimpleBlock(1, 0, kKeyFrame, Hex("AA"))})}),
                laced = Piece({Master(id::kCluster, {Uint(id::kClusterTimecode, 0)}).UnknownSize(1),
                               Holding(id::kSimpleBlock, lacing.size() + kMany + 2)});
    const struct {
        const char* name;
        Content file;
        const char* outcome;
    } rows[] = {
        {"damage", {Stretch{front}, Stretch{unit}, Stretch{Bytes(1), kMany}}, "8 tracks, 1 unit"},
        {"Voids in front of the Cluster",
         {Stretch{front}, Stretch{EmptyVoid(), kMany / 100}, Stretch{unit}},
         "8 tracks, 1 unit"},
        {"Voids behind the Cluster",
         {Stretch{front}, Stretch{unit}, Stretch{EmptyVoid(), kMany / 100}},
         "8 tracks, 1 unit"},
        {"Clusters without a block",
         {Stretch{front}, Stretch{unit}, Stretch{Piece({Cluster(0, {})}), kMany / 1000}, Stretch{unit}},
         "8 tracks, 2 units"},
        {"blocks of the last track",
         {Stretch{front}, Stretch{Piece({Cluster(0, {SimpleBlock(8, 0, kKeyFrame, Hex("AA"))})}), 200}},
         "8 tracks, 200 units"},
        {"a lace number",
         {Stretch{Concat({front, laced, lacing})}, Stretch{Hex("FF"), kMany}, Stretch{Hex("00AA")}},
         "8 tracks, 1 unit"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Outcome outcome = ThrowHostile(row.file);
        EXPECT_EQ(row.outcome, outcome.Text());
        EXPECT_LE(outcome.reading.reads, kMostReads);
    }
}

// Cues that name two Clusters by turns, neither with a key frame: a seek must not go through both each time.
TEST(Reading, ASeekGoesThroughABoundedNumberOfBlocks) {
    constexpr size_t kMany = 20000;
    Elements points;
    for (size_t i = 0; i < kMany; ++i) points.push_back(CuePoint(i % 100, 1, i % 2 == 0 ? "even" : "odd"));
    const Elements blocks(kMany, SimpleBlock(1, 0, 0, Hex("AA")));
    const Document file = Write(
        {EbmlHeader(), Segment({Info(1000), Master(id::kTracks, {Mpeg2Track()}), Master(id::kCues, points),
                                Cluster(0, blocks).Label("even"), Cluster(0, blocks).Label("odd")})});
    const android::sp<HostileSource> source = new HostileSource({Stretch{file.bytes}});
    const android::sp<android::MediaExtractor> extractor = android::createInstance(source, nullptr);
    const android::sp<android::MediaSource> track = extractor->getTrack(0);
    track->start(nullptr);
    const uint64_t before = source->Reads();
    android::MediaSource::ReadOptions options;
    options.setSeekTo(900000);
    android::MediaBuffer* buffer = nullptr;
    if (track->read(&buffer, &options) == android::OK) buffer->release();
    EXPECT_LE(source->Reads() - before, MatroskaExtReader::limit::kSeekWork + 4 * file.bytes.size());
    // Blocks that are looked at again cost no read, but count all the same.
    const auto& losses = static_cast<android::MatroskaExtExtractor*>(extractor.get())->File()->Losses.List();
    ASSERT_EQ(1u, losses.size());
    EXPECT_EQ(MatroskaExtReader::LossKind::kLimit, losses[0].kind);
}

}  // namespace
}  // namespace testing_support
