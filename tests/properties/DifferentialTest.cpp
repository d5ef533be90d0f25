// Iterators share block headers that are parsed once, and find a Cluster's end as they go. Whatever the file
// and the order of reading, they must deliver what a plain walk delivers that does neither.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <random>

#include "properties/Readers.h"
#include "properties/Shapes.h"
#include "support/Oddities.h"

namespace testing_support {
namespace {

using Order = std::function<void(Readers&, std::mt19937&)>;

void OneAfterTheOther(Readers& readers, std::mt19937&) {
    for (size_t i = 0; i < readers.Count(); ++i) readers.ReadToEnd(i);
}

void SideBySide(Readers& readers, std::mt19937&) {
    for (bool more = true; more;) {
        more = false;
        for (size_t i = 0; i < readers.Count(); ++i) more = readers.Read(i) || more;
    }
}

// The last track is read to its end between two units of the others: its runs displace theirs.
void FarApart(Readers& readers, std::mt19937& random) {
    const size_t last = readers.Count() - 1;
    for (size_t i = 0; i < last; ++i) readers.Read(i);
    readers.ReadToEnd(last);
    SideBySide(readers, random);
}

void Scattered(Readers& readers, std::mt19937& random) {
    std::vector<size_t> open(readers.Count());
    for (size_t i = 0; i < open.size(); ++i) open[i] = i;
    while (!open.empty()) {
        const size_t at = random() % open.size();
        const size_t track = open[at];
        bool more = true;
        for (size_t n = random() % 200; more && n-- > 0;) more = readers.Read(track);
        if (!more) open.erase(open.begin() + static_cast<long>(at));
    }
}

// As a player does: the next unit comes from the track that is furthest behind.
void ByTime(Readers& readers, std::mt19937&) {
    constexpr int64_t kEnded = INT64_MAX;
    std::vector<int64_t> reached(readers.Count(), -1);
    for (;;) {
        const auto behind = std::min_element(reached.begin(), reached.end());
        if (*behind == kEnded) return;
        const auto track = static_cast<size_t>(behind - reached.begin());
        *behind = readers.Read(track) ? std::max(*behind, readers.Of(track).back().unit.timeUs) : kEnded;
    }
}

const std::pair<const char*, Order> kOrders[] = {{"one after the other", OneAfterTheOther},
                                                 {"side by side", SideBySide},
                                                 {"by time", ByTime},
                                                 {"far apart", FarApart},
                                                 {"scattered", Scattered}};

// The place of the first difference, or nothing.
std::string Difference(const Deliveries& plain, const Deliveries& delivered) {
    for (size_t i = 0; i < std::max(plain.size(), delivered.size()); ++i) {
        std::ostringstream text;
        if (i >= plain.size() || i >= delivered.size()) {
            text << "plain walk " << plain.size() << " deliveries, iterator " << delivered.size();
        } else if (plain[i] == delivered[i]) {
            continue;
        } else {
            text << "delivery " << i << ": plain walk " << plain[i] << ", iterator " << delivered[i];
        }
        return text.str();
    }
    return "";
}

// Total number of deliveries compared.
size_t ExpectSameInEveryOrder(const std::string& name, const Bytes& bytes) {
    const std::vector<uint32_t> tracks = TracksOf(bytes);
    const std::vector<Deliveries> plain = PlainListings(bytes, tracks);
    size_t count = 0;
    for (const auto& [orderName, order] : kOrders) {
        Readers readers(bytes, tracks);
        std::mt19937 random(1);
        order(readers, random);
        for (size_t i = 0; i < tracks.size(); ++i) {
            EXPECT_EQ(Difference(plain[i], readers.Of(i)), "")
                << name << ", " << orderName << ", track " << tracks[i];
            count += plain[i].size();
        }
    }
    return count;
}

TEST(Differential, EveryShapeInEveryOrder) {
    for (const Shape& shape : AllShapes())
        EXPECT_GT(ExpectSameInEveryOrder(shape.name, shape.bytes), 100u) << shape.name;
}

TEST(Differential, EveryOddity) {
    for (const Oddity& file : Oddities()) ExpectSameInEveryOrder(file.name, file.bytes);
}

// Their front is a script for another test.
TEST(Differential, KeptFuzzInputs) {
    constexpr size_t kScriptBytes = 32;
    size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(FUZZ_CORPUS_DIR)) {
        std::ifstream input(entry.path(), std::ios::binary);
        const Bytes bytes{std::istreambuf_iterator<char>(input), std::istreambuf_iterator<char>()};
        if (bytes.size() <= kScriptBytes) continue;
        ++files;
        ExpectSameInEveryOrder(entry.path().filename().string(),
                               Bytes(bytes.begin() + kScriptBytes, bytes.end()));
    }
    EXPECT_GT(files, 0u);
}

// A few bytes of each file changed, a hundred times over.
TEST(Differential, DamagedFiles) {
    constexpr int kRounds = 100, kMostChanges = 12;
    constexpr size_t kLargest = 64 << 10;
    for (const Shape& shape : AllShapes()) {
        if (shape.bytes.size() > kLargest) continue;
        std::mt19937 random(7);
        for (int round = 0; round < kRounds && !testing::Test::HasFailure(); ++round) {
            Bytes bytes = shape.bytes;
            for (unsigned left = 1 + random() % kMostChanges; left > 0; --left)
                bytes[random() % bytes.size()] = static_cast<uint8_t>(random());
            if (round % 4 == 0) bytes.resize(random() % bytes.size());
            ExpectSameInEveryOrder(shape.name + ", damage " + std::to_string(round), bytes);
        }
    }
}

// One read fails, whichever it is: the source that asked has what it had delivered before, and all others
// lose nothing.
TEST(Differential, AFailedReadCostsTheSourceThatMetItAlone) {
    constexpr size_t kMostReads = 4000, kRounds = 150;
    size_t met = 0;
    for (const Shape& shape : AllShapes()) {
        const std::vector<uint32_t> tracks = TracksOf(shape.bytes);
        const std::vector<Deliveries> plain = PlainListings(shape.bytes, tracks);
        Readers whole(shape.bytes, tracks);
        const uint64_t first = whole.Source().Reads();
        std::mt19937 random(1);
        SideBySide(whole, random);
        const uint64_t reads = whole.Source().Reads() - first;
        if (reads > kMostReads) continue;
        const uint64_t step = reads / kRounds + 1;
        for (uint64_t call = first; call < first + reads; call += step) {
            Faults faults;
            faults.errorAtCall = call;
            Readers readers(shape.bytes, tracks, faults);
            size_t hit = tracks.size(), before = 0;
            for (bool more = true; more;) {
                more = false;
                for (size_t i = 0; i < tracks.size(); ++i) {
                    const bool isDue = readers.Source().Reads() <= call;
                    const size_t delivered = readers.Of(i).size();
                    more = readers.Read(i) || more;
                    if (!isDue || readers.Source().Reads() <= call) continue;
                    hit = i;
                    before = delivered;
                    ++met;
                }
            }
            for (size_t i = 0; i < tracks.size(); ++i) {
                Deliveries expected = plain[i], delivered = readers.Of(i);
                if (i == hit) {
                    expected.resize(std::min(before, expected.size()));
                    delivered.resize(std::min(before, delivered.size()));
                }
                ASSERT_EQ(Difference(expected, delivered), "")
                    << shape.name << ", track " << tracks[i] << ", call " << call << ", met by "
                    << (hit < tracks.size() ? tracks[hit] : 0);
            }
        }
    }
    EXPECT_GT(met, 500u);
}

// Iterators that seek about while the others go on reading.
TEST(Differential, Seeks) {
    constexpr int kSeeks = 60;
    constexpr size_t kUnitsAfter = 40;
    for (const Shape& shape : AllShapes()) {
        const std::vector<uint32_t> tracks = TracksOf(shape.bytes);
        std::vector<std::unique_ptr<MatroskaExtReader::CMatroskaFile>> files;
        std::vector<PlainWalk> walks;
        for (uint32_t number : tracks) {
            files.emplace_back(new MatroskaExtReader::CMatroskaFile(new FaultySource(shape.bytes), false));
            OpenWithIndex(files.back().get());
            walks.emplace_back(files.back().get(), number);
        }
        Readers readers(shape.bytes, tracks);
        std::mt19937 random(11);
        for (int n = 0; n < kSeeks; ++n) {
            const size_t track = random() % tracks.size(), other = random() % tracks.size();
            const auto range = static_cast<uint64_t>(shape.durationUs + shape.durationUs / 8);
            const auto target = static_cast<int64_t>(random() % range) - shape.durationUs / 16;
            Deliveries plain = walks[track].FromTime(target);
            if (plain.size() > kUnitsAfter) plain.resize(kUnitsAfter);
            android::MediaSource::ReadOptions options;
            options.setSeekTo(target);
            readers.Restart(track);
            readers.Read(track, &options);
            for (size_t left = kUnitsAfter - 1; left > 0; --left) {
                if (other != track) readers.Read(other);
                readers.Read(track);
            }
            EXPECT_EQ(Difference(plain, readers.Of(track)), "")
                << shape.name << ", track " << tracks[track] << ", seek to " << target;
        }
    }
}

// A grid over every track of a file, which may be a real one.
void ExpectSameOnAGridOfSeeks(const std::string& name, const Bytes& bytes) {
    constexpr int kSeeks = 40;
    constexpr size_t kUnitsAfter = 4;
    const std::vector<uint32_t> tracks = TracksOf(bytes);
    Readers readers(bytes, tracks);
    for (size_t i = 0; i < tracks.size(); ++i) {
        MatroskaExtReader::CMatroskaFile file(new FaultySource(bytes), false);
        OpenWithIndex(&file);
        PlainWalk walk(&file, tracks[i]);
        const auto durationUs = static_cast<int64_t>(file.Segment.GetDuration() / 1000);
        for (int n = 0; n < kSeeks; ++n) {
            const int64_t target = durationUs / kSeeks * n + n;
            Deliveries plain = walk.FromTime(target);
            if (plain.size() > kUnitsAfter) plain.resize(kUnitsAfter);
            android::MediaSource::ReadOptions options;
            options.setSeekTo(target);
            readers.Restart(i);
            bool more = readers.Read(i, &options);
            while (more && readers.Of(i).size() < kUnitsAfter) more = readers.Read(i);
            EXPECT_EQ(Difference(plain, readers.Of(i)), "")
                << name << ", track " << tracks[i] << ", seek to " << target;
        }
    }
}

// MKVX_TEST_FILES may name a folder of more files.
TEST(Differential, AGridOfSeeks) {
    for (const Oddity& file : Oddities()) ExpectSameOnAGridOfSeeks(file.name, file.bytes);
    const char* more = std::getenv("MKVX_TEST_FILES");
    if (more == nullptr) return;
    for (const auto& entry : std::filesystem::directory_iterator(more)) {
        if (!entry.is_regular_file()) continue;
        std::ifstream input(entry.path(), std::ios::binary);
        const Bytes bytes{std::istreambuf_iterator<char>(input), std::istreambuf_iterator<char>()};
        ExpectSameOnAGridOfSeeks(entry.path().filename().string(), bytes);
        ExpectSameInEveryOrder(entry.path().filename().string(), bytes);
    }
}

// What the sharing is for: a track more costs the source its payloads and not the headers again.
TEST(Differential, ManyTracksReadEachHeaderOnce) {
    for (const Shape& shape : AllShapes()) {
        if (shape.name != "many tracks") continue;
        const std::vector<uint32_t> tracks = TracksOf(shape.bytes);
        Readers one(shape.bytes, {kUnknownTrack}), all(shape.bytes, tracks);
        one.ReadToEnd(0);
        std::mt19937 random(1);
        ByTime(all, random);
        size_t units = 0;
        for (size_t i = 0; i < tracks.size(); ++i) units += all.Of(i).size();
        const uint64_t headers = one.Source().Reads() - one.Of(0).size();
        // Each track steps from Cluster to Cluster by itself.
        constexpr size_t kClusters = 30, kReadsAStep = 4;
        EXPECT_LE(all.Source().Reads(), headers + units + kClusters * kReadsAStep * tracks.size());
        return;
    }
    FAIL() << "no such shape";
}

}  // namespace
}  // namespace testing_support
