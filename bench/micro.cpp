// The parts of a read and of an opening, one by one.
#include <benchmark/benchmark.h>
#include <host/MemorySource.h>
#include <media/stagefright/MediaBuffer.h>
#include <media/stagefright/MetaData.h>
#include <zlib.h>

#include "matroska/MatroskaExtExtractor.h"
#include "matroska/reader/Lacing.h"
#include "matroska/reader/MatroskaReader.h"
#include "support/EbmlWriter.h"

namespace {

using namespace testing_support;
namespace reader = MatroskaExtReader;
using android::sp;

sp<android::DataSource> InMemory(const Bytes& bytes) {
    return new android::host::MemorySource(bytes.data(), bytes.size());
}

Element VideoTrack() {
    return Track(1, 1, "V_VP8", {Video(320, 240)});
}

// ---- numbers and headers

void VariableLengthNumbers(benchmark::State& state) {
    Bytes bytes;
    for (uint64_t i = 0; i < 1000; ++i) {
        const Bytes number = Vint(uint64_t{1} << (i * 7 % 50), 0);
        bytes.insert(bytes.end(), number.begin(), number.end());
    }
    for (auto _ : state) {
        uint64_t sum = 0;
        for (size_t at = 0; at < bytes.size();) {
            const unsigned length = reader::SizeLength(bytes[at]);
            sum +=
                reader::AppendBigEndian(reader::SizeValueBits(bytes[at], length), &bytes[at] + 1, length - 1);
            at += length;
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * 1000);
}
BENCHMARK(VariableLengthNumbers);

void ElementHeaders(benchmark::State& state) {
    constexpr size_t kChildren = 1000;
    Elements children(kChildren, Uint(id::kClusterPosition, 77));
    const Document document = Write({Master(id::kCluster, children)});
    reader::CMatroskaFile file(InMemory(document.bytes));
    const sp<reader::CMatroskaNode> cluster =
        sp<reader::CMatroskaNode>(new reader::CMatroskaNode(&file))->Child(id::kCluster, true);
    for (auto _ : state) {
        size_t count = 0;
        reader::ChildWalk walk(cluster.get());
        do {
            ++count;
        } while (walk.Next());
        if (count != kChildren) state.SkipWithError("not every child was met");
    }
    state.SetItemsProcessed(state.iterations() * int64_t{kChildren});
}
BENCHMARK(ElementHeaders);

// ---- blocks

struct BytesInMemory {
    const Bytes& bytes;
    size_t at = 0;
    bool Take(uint8_t* out, unsigned n) {
        if (n > bytes.size() - at) return false;
        memcpy(out, &bytes[at], n);
        at += n;
        return true;
    }
    uint64_t Position() const { return at; }
    uint64_t LeftInFile() const { return bytes.size() - at; }
};

void LaceHeader(benchmark::State& state) {
    constexpr size_t kFrames = 8;
    std::vector<Bytes> frames;
    for (size_t i = 0; i < kFrames; ++i)
        frames.push_back(Pattern(state.range(0) == 2 ? 200 : 100 + 60 * i, 1));
    const Bytes block = Laced(static_cast<Lacing>(state.range(0)), frames);
    for (auto _ : state) {
        BytesInMemory bytes{block};
        uint64_t sum = 0;
        const auto result = reader::DecodeLacing(static_cast<uint32_t>(state.range(0)), block.size(), bytes,
                                                 [&sum](uint64_t size) { sum += size; });
        benchmark::DoNotOptimize(sum);
        if (!result.isWhole) state.SkipWithError("a lace does not fit");
    }
    state.SetLabel(state.range(0) == 1 ? "Xiph" : state.range(0) == 2 ? "fixed" : "EBML");
    state.SetItemsProcessed(state.iterations() * int64_t{kFrames});
}
BENCHMARK(LaceHeader)->DenseRange(1, 3);

// Walking all blocks of a Cluster: the first time, and as a further track whose headers are known.
void BlockHeaders(benchmark::State& state) {
    constexpr size_t kBlocks = 1000;
    const bool isShared = state.range(0) != 0;
    Elements blocks(kBlocks, SimpleBlock(1, 0, kKeyFrame, Pattern(50, 1)));
    const Document document = Write({Segment({Cluster(0, blocks)})});
    reader::CMatroskaFile file(InMemory(document.bytes));
    const sp<reader::CMatroskaNode> root = new reader::CMatroskaNode(&file);
    const sp<reader::CMatroskaNode> cluster = root->Child(id::kSegment, true)->Child(id::kCluster, true);
    for (auto _ : state) {
        if (!isShared) file.Blocks.Clear();
        size_t count = 0;
        sp<reader::BlockRun> run = file.Blocks.First(cluster.get());
        for (size_t index = 0;; ++index) {
            if (index == reader::BlockRun::kBlocks) {
                run = file.Blocks.After(*run);
                index = 0;
            }
            if (!run->Reach(index)) break;
            benchmark::DoNotOptimize(run->At(index).header.dataSize);
            ++count;
        }
        if (count != kBlocks) state.SkipWithError("not every block was met");
    }
    state.SetLabel(isShared ? "known" : "first time");
    state.SetItemsProcessed(state.iterations() * int64_t{kBlocks});
}
BENCHMARK(BlockHeaders)->Arg(0)->Arg(1);

// ---- units

void UnitBuffer(benchmark::State& state) {
    const auto size = static_cast<size_t>(state.range(0));
    for (auto _ : state) {
        auto* buffer = new android::MediaBuffer(size);
        {
            const sp<android::MetaData> meta = buffer->meta_data();
            meta->setInt64(android::kKeyTime, 40000);
            meta->setInt32(android::kKeyIsSyncFrame, 1);
        }
        benchmark::DoNotOptimize(buffer->data());
        buffer->release();
    }
}
BENCHMARK(UnitBuffer)->Arg(50)->Arg(20000);

void InflateFrame(benchmark::State& state) {
    Bytes plain;
    for (unsigned i = 0; i < 8192; ++i) plain.push_back(static_cast<uint8_t>((i * 37) >> 5));
    uLongf length = compressBound(plain.size());
    Bytes packed(length);
    compress(packed.data(), &length, plain.data(), plain.size());
    reader::Inflater inflater;
    for (auto _ : state) {
        if (!inflater.Run(packed.data(), static_cast<uint32_t>(length), 1u << 20))
            state.SkipWithError("does not inflate");
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(plain.size()));
}
BENCHMARK(InflateFrame);

// ---- opening

Bytes FileOfClusters(int64_t count, bool hasCues) {
    Elements points, clusters;
    for (int64_t i = 0; i < count; ++i) {
        const std::string label = std::to_string(i);
        const auto time = static_cast<uint64_t>(i) * 40;
        points.push_back(CuePoint(time, 1, label));
        clusters.push_back(Cluster(time, {SimpleBlock(1, 0, kKeyFrame, Pattern(24, 1))}).Label(label));
    }
    Elements children = {Info(static_cast<double>(count) * 40), Master(id::kTracks, {VideoTrack()})};
    if (hasCues) children.push_back(Master(id::kCues, points));
    children.insert(children.end(), clusters.begin(), clusters.end());
    return Write({EbmlHeader(), Segment(children)}).bytes;
}

void Open(benchmark::State& state, bool hasCues) {
    const Bytes bytes = FileOfClusters(state.range(0), hasCues);
    const sp<android::DataSource> source = InMemory(bytes);
    for (auto _ : state) {
        const sp<android::MatroskaExtExtractor> extractor = new android::MatroskaExtExtractor(source);
        if (extractor->File()->Index().size() != static_cast<size_t>(state.range(0)))
            state.SkipWithError("the index is not whole");
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK_CAPTURE(Open, cues, true)->RangeMultiplier(4)->Range(1 << 10, 1 << 14)->Complexity();
BENCHMARK_CAPTURE(Open, no_cues, false)->RangeMultiplier(4)->Range(1 << 10, 1 << 14)->Complexity();

}  // namespace

BENCHMARK_MAIN();
