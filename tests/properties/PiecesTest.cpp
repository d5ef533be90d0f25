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
    return files;
}

std::vector<File> SomeFiles() {
    std::vector<File> files = CuesOfManyKinds();
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
    EXPECT_LE(ReadsOf(Write({EbmlHeader(), Segment(children)}).bytes), 2 * kClusters + 32);

    const Element cues = Master(id::kCues, points).Label("cues");
    const Document listed =
        Write({EbmlHeader(), Segment({SeekHead({{id::kCues, "cues"}}), info, tracks, clusters[0], cues})});
    EXPECT_LE(ReadsOf(listed.bytes), 64 + (listed.EndOf("cues") - listed.DataOf("cues")) / (32 << 10));
}

}  // namespace
}  // namespace testing_support
