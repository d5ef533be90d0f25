// What sniffing and opening cost the source, and that sniffing answers what a whole parse would.
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "matroska/MatroskaFixture.h"
#include "matroska/reader/MatroskaReader.h"
#include "properties/Shapes.h"
#include "support/Oddities.h"

namespace testing_support {
namespace {

constexpr uint64_t kMostSniffReads = 8, kMostSniffBytes = 4 << 10;
constexpr uint64_t kSlack = 64 << 10;

Bytes BytesOf(const std::filesystem::path& path) {
    std::ifstream input(path, std::ios::binary);
    return Bytes{std::istreambuf_iterator<char>(input), std::istreambuf_iterator<char>()};
}

std::vector<std::pair<std::string, Bytes>> SoundFiles() {
    std::vector<std::pair<std::string, Bytes>> files;
    for (const Oddity& oddity : Oddities()) files.emplace_back(oddity.name, oddity.bytes);
    for (const Shape& shape : AllShapes()) files.emplace_back(shape.name, shape.bytes);
    const char* more = std::getenv("MKVX_TEST_FILES");  // a folder
    if (more == nullptr) return files;
    for (const auto& entry : std::filesystem::directory_iterator(more))
        if (entry.is_regular_file()) files.emplace_back(entry.path().filename(), BytesOf(entry.path()));
    return files;
}

// The confidence, or 0 for a source that is not claimed.
float Sniffed(const sp<FaultySource>& source) {
    android::String8 mime;
    float confidence = 0;
    sp<android::AMessage> meta;
    (void)android::Sniffer(source, &mime, &confidence, &meta);
    return confidence;
}

void ExpectAnswerOfAWholeParse(const std::string& name, const Bytes& bytes) {
    MatroskaExtReader::CMatroskaFile whole(sp<android::DataSource>(new FaultySource(bytes)));
    const sp<MatroskaExtReader::CMatroskaNode> root = new MatroskaExtReader::CMatroskaNode(&whole);
    (void)whole.Parse(root.get());
    const float claimed = std::strcmp(whole.Header.DocType.c_str(), "webm") == 0 ? 0.5f : 0.91f;
    const Bytes magic = Hex("1A45DFA3");
    const bool isClaimed = bytes.size() >= 4 && std::equal(magic.begin(), magic.end(), bytes.begin());
    EXPECT_EQ(isClaimed ? claimed : 0, Sniffed(new FaultySource(bytes))) << name;
}

TEST(Sniffing, AnswersAsAWholeParseWould) {
    for (const auto& [name, bytes] : SoundFiles()) ExpectAnswerOfAWholeParse(name, bytes);
    for (const auto& entry : std::filesystem::directory_iterator(FUZZ_CORPUS_DIR))
        ExpectAnswerOfAWholeParse(entry.path().filename(), BytesOf(entry.path()));
    const Bytes segment = Write({Segment({Info(1)})}).bytes, second = Write({EbmlHeader("webm")}).bytes;
    ExpectAnswerOfAWholeParse("a header behind the Segment",
                              Concat({Write({EbmlHeader()}).bytes, segment, second}));
}

TEST(Sniffing, ReadsNothingInsideASegment) {
    for (const auto& [name, bytes] : SoundFiles()) {
        const sp<FaultySource> source = new FaultySource(bytes);
        if (Sniffed(source) == 0) continue;
        EXPECT_LE(source->Reads(), kMostSniffReads) << name;
        EXPECT_LE(source->BytesRead(), kMostSniffBytes) << name;
    }
    const sp<FaultySource> voids = new FaultySource(
        Concat({Write({EbmlHeader()}).bytes, Write(Elements(9000, Bin(id::kVoid, Bytes(99)))).bytes}));
    EXPECT_EQ(0.91f, Sniffed(voids));
    EXPECT_LE(voids->Reads(), MatroskaExtReader::limit::kSniffedElements + kMostSniffReads);
}

// Up to the first unit of each track: the head, the Cues, the blocks up to those units, and little else.
TEST(Opening, CostsTheHeadAndNeverTheFile) {
    constexpr uint64_t kClusters = 3000;
    const Elements head = {Info(kClusters * 1000), Master(id::kTracks, {Mpeg2Track(1), Mp3Track(2)})};
    const Element cues = Master(id::kCues, {CuePoint(0, 1, "0"), CuePoint(1000, 1, "1")}).Label("cues");
    const Element cuesListed = SeekHead({{id::kCues, "cues"}});
    auto with = [&](const Elements& front, const Elements& back, bool isLive) {
        Elements children = front;
        for (uint64_t i = 0; i < kClusters; ++i) {
            const Element cluster = Cluster(i * 1000, {SimpleBlock(1, 0, kKeyFrame, Bytes(500)),
                                                       SimpleBlock(2, 0, kKeyFrame, Bytes(500))})
                                        .Label(std::to_string(i));
            children.push_back(isLive ? cluster.UnknownSize() : cluster);
        }
        children.insert(children.end(), back.begin(), back.end());
        return Write({EbmlHeader(), isLive ? Segment(children).UnknownSize() : Segment(children)});
    };
    const struct {
        const char* name;
        Document file;
        bool isCaching;
    } rows[] = {
        {"Cues in front", with({cuesListed, head[0], head[1], cues}, {}, false), false},
        {"Cues behind", with({cuesListed, head[0], head[1]}, {cues}, false), false},
        {"Cues in front, over a network", with({cuesListed, head[0], head[1], cues}, {}, false), true},
        {"nothing tells, over a network", with(head, {cues}, false), true},
        {"live, over a network", with(head, {}, true), true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Faults faults;
        if (row.isCaching) faults.flags = android::DataSource::kIsCachingDataSource;
        const sp<FaultySource> source = new FaultySource(row.file.bytes, faults);
        const sp<MediaExtractor> extractor = Open(sp<android::DataSource>(source));
        ASSERT_EQ(2u, extractor->countTracks());
        for (size_t i = 0; i < 2; ++i) EXPECT_NE("-1011", ReadOne(Started(extractor, i)));
        EXPECT_LE(source->BytesRead(), row.file.DataOf("0") + 1100 + kSlack);
    }
}

}  // namespace
}  // namespace testing_support
