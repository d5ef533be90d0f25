// A walk by pieces finds what a walk by exact reads finds, whatever the file and the source: the same model,
// index, losses and units, for the same measure of work; and asks the source less often.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include "properties/Readers.h"
#include "properties/Shapes.h"
#include "support/ModelState.h"
#include "support/Oddities.h"

namespace testing_support {
namespace {

struct File {
    std::string name;
    Bytes bytes;
};

void AddFolder(const char* folder, std::vector<File>* files) {
    if (folder == nullptr) return;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (!entry.is_regular_file()) continue;
        std::ifstream input(entry.path(), std::ios::binary);
        files->push_back({entry.path().filename(), Bytes{std::istreambuf_iterator<char>(input), {}}});
    }
}

// Cues of every form: plain, of long numbers and sizes, with what nobody reads, broken in each place.
std::vector<File> CuesOfManyKinds() {
    const Element track = Uint(id::kCueTrack, 1), cluster = Uint(id::kCueClusterPosition, 300);
    const Element position = Master(id::kCueTrackPositions, {track, cluster});
    const Element time = Uint(id::kCueTime, 7000);
    const Element points[] = {
        Master(id::kCuePoint, {time, position}),
        Master(id::kCuePoint, {position, time, position}),
        Master(id::kCuePoint,
               {time, Master(id::kCueTrackPositions, {track, cluster, Bin(0xF0, Hex("010203"))})}),
        Master(id::kCuePoint,
               {time, Master(id::kCueTrackPositions,
                             {Uint(id::kCueBlockNumber, 3), Uint(0x5378, 2), Uint(id::kCueCodecState, 9)})}),
        Master(id::kCuePoint, {time, Master(id::kCueTrackPositions,
                                            {track, Master(id::kCueReference, {Uint(id::kCueRefTime, 4)})})}),
        Master(id::kCuePoint, {time.SizeWidth(3), position.SizeWidth(8)}).SizeWidth(2),
        Master(id::kCuePoint, {Bin(id::kCueTime, Pattern(9, 1)), position, Bin(id::kVoid, Bytes(200))}),
        Master(id::kCuePoint, {Bin(id::kCueTime, {}), position}),
        Master(id::kCuePoint, {time, Master(id::kCueTrackPositions, Elements{})}),
        Master(id::kCuePoint, {time.DeclaredSize(5), position}),
        Master(id::kCuePoint, {time, position.DeclaredSize(90)}),
        Master(id::kCuePoint, {time, position}).DeclaredSize(7),
        Master(id::kCuePoint, {time, position}).UnknownSize(1),
        Master(id::kCuePoint, {time, Raw(Hex("B7"))}),
        // A header that goes on past the end of its master, with a size past everything.
        Master(id::kCuePoint, {time, Master(id::kCueTrackPositions, {track, Raw(Hex("EC01"))}),
                               Raw(Hex("00007FFFFFFFFFFF"))}),
        Master(id::kCuePoint, {}),
        Bin(id::kVoid, Bytes(40)),
        Raw(Hex("0F")),
    };
    std::vector<File> files;
    for (size_t kind = 0; kind < std::size(points); ++kind) {
        Elements cues(700, points[0]);
        for (size_t at : {size_t{0}, size_t{1}, size_t{400}, size_t{401}, cues.size() - 1})
            cues[at] = points[kind];
        const Element list = Master(id::kCues, cues).Label("cues");
        const Element blocks = Cluster(0, {SimpleBlock(1, 0, kKeyFrame, Bytes(40))});
        const std::string name = "cue points of kind " + std::to_string(kind);
        files.push_back({name + " in front", Write({EbmlHeader(), Segment({list, Info(9), blocks})}).bytes});
        files.push_back({name + " behind",
                         Write({EbmlHeader(), Segment({SeekHead({{id::kCues, "cues"}}), Info(9),
                                                       Master(id::kTracks, {Mpeg2Track()}), blocks, list})})
                             .bytes});
    }
    const Element shortest = Raw(Hex("BB82B380"));  // one piece holds the list and what is no part of it
    files.push_back({"points behind the Cues",
                     Write({EbmlHeader(), Segment({Master(id::kCues, {shortest, shortest}), shortest,
                                                   shortest, Info(9), Cluster(0, {})})})
                         .bytes});
    return files;
}

// What a Cluster begins with, in all lengths around a head's, and in forms that nobody may decode by itself.
File ClustersOfManyFronts() {
    const Element time = Uint(id::kClusterTimecode, 700), block = SimpleBlock(1, 5, kKeyFrame, Bytes(9));
    const Element large = SimpleBlock(1, 5, kKeyFrame, Bytes(300));
    const Element group = BlockGroup(1, 5, Bytes(3), {Uint(id::kBlockDuration, 40)});
    Elements children = {Info(1), Master(id::kTracks, {Mpeg2Track()})};
    for (size_t length = 0; length < 28; ++length) {
        for (int width : {2, 3, 8}) {
            const Element front = Bin(id::kVoid, Bytes(length));
            children.push_back(Master(id::kCluster, {time, front, large.SizeWidth(width), block}));
        }
        children.push_back(Master(id::kCluster, {time, Bin(id::kVoid, Bytes(length)), group}));
    }
    const Elements odd[] = {
        {time},  // what follows it is not its own
        {},
        {time, Uint(id::kClusterTimecode, 900), block},
        {Bin(id::kClusterTimecode, {}), block},
        {Bin(id::kClusterTimecode, Pattern(9, 1)), block},
        {block, time, block},
        {Uint(id::kClusterPrevSize, 90), time, SimpleBlock(1, 5, kKeyFrame, Bytes(9)).DeclaredSize(400)},
        {time, block.UnknownSize(1)},
        {time, Raw(Hex("A380"))},
    };
    for (const Elements& front : odd) {
        children.push_back(Master(id::kCluster, front));
        children.push_back(block);
        children.push_back(Master(id::kCluster, front).UnknownSize(2));
    }
    return {"fronts of Clusters", Write({EbmlHeader(), Segment(children)}).bytes};
}

std::vector<File> SomeFiles() {
    std::vector<File> files = CuesOfManyKinds();
    files.push_back(ClustersOfManyFronts());
    for (const Oddity& oddity : Oddities()) files.push_back({oddity.name, oddity.bytes});
    for (const Shape& shape : AllShapes()) files.push_back({shape.name, shape.bytes});
    return files;
}

std::vector<Faults> FaultsFor(const Bytes& bytes) {
    std::vector<Faults> all(5);
    all[1].sizeStatus = android::ERROR_UNSUPPORTED;
    all[2].flags = android::DataSource::kIsCachingDataSource;
    all[3].claimSize = all[4].claimSize = true;
    all[3].claimedSize = static_cast<off64_t>(bytes.size() / 2);
    all[4].claimedSize = static_cast<off64_t>(bytes.size() + 5000);
    for (size_t most : {1, 2, 7, 31, 100, 1000, 5000}) {
        all.emplace_back();
        all.back().maxBytesPerCall = most;
    }
    constexpr uint64_t kPlaces = 60;
    for (uint64_t from = 0; from < bytes.size(); from += 1 + bytes.size() / kPlaces) {
        all.emplace_back();
        all.back().errorFromOffset = from;
    }
    return all;
}

TEST(Pieces, FindWhatExactReadsFind) {
    std::vector<File> files = SomeFiles();
    AddFolder(FUZZ_CORPUS_DIR, &files);
    AddFolder(std::getenv("MKVX_TEST_FILES"), &files);
    for (const File& file : files) {
        SCOPED_TRACE(file.name);
        for (const Faults& faults : FaultsFor(file.bytes)) {
            ASSERT_EQ(StateOf(new FaultySource(file.bytes, faults), false),
                      StateOf(new FaultySource(file.bytes, faults), true))
                << "errors from " << faults.errorFromOffset << ", most " << faults.maxBytesPerCall;
        }
    }
}

TEST(Pieces, DeliverWhatExactReadsDeliver) {
    for (const File& file : SomeFiles()) {
        SCOPED_TRACE(file.name);
        const std::vector<uint32_t> tracks = TracksOf(file.bytes);
        for (const Faults& faults : FaultsFor(file.bytes)) {
            Readers exact(file.bytes, tracks, faults, false), pieces(file.bytes, tracks, faults);
            for (bool more = true; more;) {
                more = false;
                for (size_t i = 0; i < tracks.size(); ++i) {
                    const bool isOn = exact.Read(i);
                    ASSERT_EQ(isOn, pieces.Read(i)) << "errors from " << faults.errorFromOffset;
                    ASSERT_TRUE(!isOn || exact.Of(i).back() == pieces.Of(i).back());
                    more = more || isOn;
                }
            }
        }
    }
}

// The model, index and losses; what was read on the way is left out.
std::string FoundWith(const File& file, const Faults& faults, bool visits, size_t* spared) {
    MatroskaExtReader::CMatroskaFile opened(new FaultySource(file.bytes, faults));
    (void)opened.Init();
    *spared += opened.Segment.PassedClusters != nullptr;
    if (visits) opened.Segment.PassedClusters = nullptr;
    if (opened.Segment.Cues.empty()) opened.RebuildIndex();
    (void)opened.BuildIndexForSync();
    const std::string state = ModelState(opened);
    return state.substr(state.find('\n'));
}

TEST(Pieces, ClustersThatWerePassedAreWhatAVisitFinds) {
    std::vector<File> files = SomeFiles();
    AddFolder(FUZZ_CORPUS_DIR, &files);
    size_t spared = 0;
    for (const File& file : files) {
        SCOPED_TRACE(file.name);
        for (const Faults& faults : FaultsFor(file.bytes)) {
            ASSERT_EQ(FoundWith(file, faults, true, &spared), FoundWith(file, faults, false, &spared))
                << "errors from " << faults.errorFromOffset << ", most " << faults.maxBytesPerCall;
        }
    }
    EXPECT_GT(spared, 500u);
}

// One call fails: a piece that does costs nothing, another read what it would cost without pieces.
TEST(Pieces, AFailedPieceCostsNothing) {
    size_t pieces = 0;
    for (const File& file : SomeFiles()) {
        SCOPED_TRACE(file.name);
        Faults recorded;
        recorded.recordCalls = true;
        const android::sp<FaultySource> exact = new FaultySource(file.bytes, recorded);
        const android::sp<FaultySource> taken = new FaultySource(file.bytes, recorded);
        const std::string sound = StateOf(exact, false);
        (void)StateOf(taken, true);
        const std::vector<FaultySource::Call> exactCalls = exact->Calls(), calls = taken->Calls();
        for (size_t n = 0; n < calls.size(); n += 1 + calls.size() / 60) {
            std::set<std::string> expected = {sound};
            for (size_t k = 0; k < exactCalls.size(); ++k) {
                if (exactCalls[k].offset != calls[n].offset || exactCalls[k].size != calls[n].size) continue;
                Faults faults;
                faults.errorAtCall = k;
                expected.insert(StateOf(new FaultySource(file.bytes, faults), false));
            }
            pieces += expected.size() == 1;
            Faults faults;
            faults.errorAtCall = n;
            EXPECT_EQ(1u, expected.count(StateOf(new FaultySource(file.bytes, faults), true)))
                << "call " << n;
        }
    }
    EXPECT_GT(pieces, 500u);
}

// What is left of the Cues each time they are parsed while opening's reads run out.
std::string CuesOverAndOver(const Bytes& bytes, bool takesPieces) {
    MatroskaExtReader::CMatroskaFile file(new FaultySource(bytes), takesPieces);
    const MatroskaExtReader::CMatroskaFile::Opening opening(&file);
    const android::sp<MatroskaExtReader::CMatroskaNode> root = new MatroskaExtReader::CMatroskaNode(&file);
    const auto cues = root->Child(id::kSegment, true)->Child(id::kCues, true);
    std::string text;
    for (bool more = true; more;) {  // bounded by opening's reads
        const MatroskaExtReader::AutoPtr<MatroskaExtReader::Cue> cue = new MatroskaExtReader::Cue;
        (void)cue->Parse(cues.get());
        text += std::to_string(cue->Points.size()) + " points, " + std::to_string(cue->Positions.size()) +
                " positions, at " + std::to_string(file.Position()) + ", " + std::to_string(file.Reads()) +
                " reads\n";
        more = !cue->Points.empty();
    }
    return text;
}

TEST(Pieces, CuesCountAsTheReadsThatTheySpare) {
    for (const File& file : CuesOfManyKinds()) {
        SCOPED_TRACE(file.name);
        EXPECT_EQ(CuesOverAndOver(file.bytes, false), CuesOverAndOver(file.bytes, true));
    }
}

// Two Clusters of blocks in all forms that a stretch takes, none of which may be decoded by itself; one goes
// on behind the target. Cues name them by turns, the first point one that a seek may end in.
Bytes FileOfVainCues(int points) {
    const Bytes small(20), large(200);
    const Element reference = Int(id::kReferenceBlock, -300, 2), duration = Uint(id::kBlockDuration, 40);
    Elements cues = {CuePoint(0, 1, "sought")}, blocks[2];
    for (int i = 0; i < points; ++i) cues.push_back(CuePoint(1, 1, i % 2 == 0 ? "even" : "odd"));
    for (int i = 0; i < 10000; ++i) {
        const auto time = static_cast<int16_t>(i);
        for (Elements* list : {&blocks[0], &blocks[1]}) {
            list->push_back(i % 4 == 0   ? SimpleBlock(1, time, 0, small)
                            : i % 4 == 1 ? SimpleBlock(1, time, 0, large)
                            : i % 4 == 2 ? BlockGroup(1, time, large, {duration, reference})
                                         : BlockGroup(1, time, small, {Bin(id::kVoid, small), reference}));
        }
    }
    return Write({EbmlHeader(),
                  Segment({Info(100000), Master(id::kTracks, {Mpeg2Track()}), Master(id::kCues, cues),
                           Cluster(0, blocks[0]).Label("even"), Cluster(10000, blocks[1]).Label("odd"),
                           Cluster(0, {SimpleBlock(1, 0, kKeyFrame, small)}).Label("sought")})})
        .bytes;
}

// A seek ends where its work does, and what it has come to is known to the last read.
TEST(Pieces, ASeekGivesUpWhereExactReadsDo) {
    for (int points : {10, 100, 200}) {
        const Bytes bytes = FileOfVainCues(points);
        Readers exact(bytes, {1}, {}, false), pieces(bytes, {1});
        for (int64_t target : {15000, 15005, 90000}) {
            android::MediaSource::ReadOptions options;
            options.setSeekTo(target * 1000);
            for (Readers* readers : {&exact, &pieces}) {
                readers->Restart(0);
                for (bool more = readers->Read(0, &options); more && readers->Of(0).size() < 200;)
                    more = readers->Read(0);
            }
            EXPECT_EQ(exact.Of(0), pieces.Of(0)) << points << " points, to " << target;
            EXPECT_EQ(exact.Work(), pieces.Work()) << points << " points, to " << target;
        }
        EXPECT_EQ(points > 50, exact.LastLoss() != "none");
        EXPECT_EQ(exact.LastLoss(), pieces.LastLoss());
    }
}

// Small Clusters up to the end of the Segment, and something behind it.
TEST(Pieces, NoHeadGoesPastWhatEnclosesIt) {
    Elements children = {Info(1), Master(id::kTracks, {Mpeg2Track()})};
    children.insert(children.end(), 5, Cluster(0, {SimpleBlock(1, 0, kKeyFrame, Bytes(4))}));
    const Document file =
        Write({EbmlHeader(), Segment(children).Label("segment"), Bin(id::kVoid, Bytes(90))});
    Faults recorded;
    recorded.recordCalls = true;
    const android::sp<FaultySource> source = new FaultySource(file.bytes, recorded);
    (void)StateOf(source, true);
    const auto end = static_cast<off64_t>(file.EndOf("segment"));
    for (const FaultySource::Call& call : source->Calls())
        EXPECT_FALSE(call.offset < end && call.offset + static_cast<off64_t>(call.size) > end);
}

// Bytes asked for by walks over headers, each of which a head goes far beyond, while a file is opened.
uint64_t AskedByWalks(const Bytes& bytes, bool takesPieces) {
    const android::sp<FaultySource> source = new FaultySource(bytes);
    MatroskaExtReader::CMatroskaFile file(source, takesPieces);
    const MatroskaExtReader::CMatroskaFile::Opening opening(&file);
    const MatroskaExtReader::CMatroskaFile::Heads heads(&file);
    const android::sp<MatroskaExtReader::CMatroskaNode> root = new MatroskaExtReader::CMatroskaNode(&file);
    for (int walk = 0; walk < 50; ++walk) {
        const auto node = root->Child(0, false);
        while (node->Next(false)) {  // bounded: every step moves forward
        }
    }
    return source->BytesRead();
}

TEST(Pieces, WhatIsHeldInVainIsBounded) {
    const Bytes bytes = Write(Elements(100, Bin(id::kVoid, Bytes(100)))).bytes;
    EXPECT_LE(AskedByWalks(bytes, true), AskedByWalks(bytes, false) + MatroskaExtReader::limit::kUnusedBytes +
                                             MatroskaExtReader::limit::kUnusedBytesPerByte * bytes.size());
}

uint64_t ReadsOf(const Bytes& bytes) {
    const android::sp<FaultySource> source = new FaultySource(bytes);
    (void)StateOf(source, true);
    return source->Reads();
}

TEST(Pieces, ReadsOfOpeningAreFew) {
    constexpr uint64_t kClusters = 20000;
    Elements clusters, points;
    for (uint64_t i = 0; i < kClusters; ++i) {
        clusters.push_back(Cluster(i * 40, {SimpleBlock(1, 0, kKeyFrame, Bytes(60))}));
        points.push_back(CuePoint(i * 40, 1, "cluster"));
    }
    clusters[0] = clusters[0].Label("cluster");
    const Element info = Info(kClusters * 40), tracks = Master(id::kTracks, {Mpeg2Track()});
    Elements children = {info, tracks};
    children.insert(children.end(), clusters.begin(), clusters.end());
    EXPECT_LE(ReadsOf(Write({EbmlHeader(), Segment(children)}).bytes), kClusters + 32);

    const Element cues = Master(id::kCues, points).Label("cues");
    const Document listed =
        Write({EbmlHeader(), Segment({SeekHead({{id::kCues, "cues"}}), info, tracks, clusters[0], cues})});
    EXPECT_LE(ReadsOf(listed.bytes), 64 + (listed.EndOf("cues") - listed.DataOf("cues")) / (32 << 10));
}

}  // namespace
}  // namespace testing_support
