// What iterators of their own find out about a track: its first frames' configuration, and a frame that
// stands for the file.
#include <functional>

#include "matroska/MatroskaExtIterator.h"
#include "matroska/MatroskaFixture.h"
#include "matroska/reader/MatroskaReader.h"

namespace testing_support {
namespace {

// An iterator of a file with these blocks.
struct Iterated {
    explicit Iterated(const Elements& blocks, uint32_t track = 1)
        : file(sp<android::DataSource>(new FaultySource(Movie({Mpeg2Track(1)}, {Cluster(0, blocks)}).bytes))),
          opened(file.Init()),
          iterator(&file, 0, 0, track, nullptr) {}
    MatroskaExtReader::CMatroskaFile file;
    MatroskaExtReader::Result opened;
    android::MatroskaExtIterator iterator;
};

Element KeyFrame(const char* hex) {
    return SimpleBlock(1, 0, kKeyFrame, Hex(hex));
}

TEST(FrameInspection, NumbersOfTheFirstFrame) {
    using Numbers = std::vector<int>;
    Numbers ac3(3, -1), none(3, -1), dts(3, -1);
    Iterated({KeyFrame("0B77 0000 56 40 40")}).iterator.getAC3Info(ac3[0], ac3[1], ac3[2]);
    Iterated({}).iterator.getAC3Info(none[0], none[1], none[2]);
    Iterated({KeyFrame("7FFE8001")}).iterator.getDTSInfo(dts[0], dts[1], dts[2]);
    EXPECT_EQ((Numbers{974, 44100, 224000}), ac3);
    int flags, sampleRate, bitRate;
    EXPECT_EQ(974, Iterated({}).iterator.a52_syncinfo(Hex("0B77 0000 56 40 40").data(), &flags, &sampleRate,
                                                      &bitRate));
    EXPECT_EQ(Numbers(3), none);
    EXPECT_EQ(Numbers(3), dts);
    Iterated mpeg4({KeyFrame("000001B0 01 000001B5 09 000001B6 10")});
    EXPECT_EQ("000001b001000001b509", ToHex(mpeg4.iterator.getMpeg4Headers()));
    EXPECT_EQ("", ToHex(Iterated({}).iterator.getMpeg4Headers()));
}

TEST(FrameInspection, EachLeavesTheIteratorAtTheStart) {
    using Iterator = android::MatroskaExtIterator;
    int a, b, c;
    unsigned int size;
    long long position;
    const std::function<void(Iterator&)> inspections[] = {
        [&](Iterator& iterator) { iterator.getAC3Info(a, b, c); },
        [&](Iterator& iterator) { iterator.getDTSInfo(a, b, c); },
        [&](Iterator& iterator) { delete[] iterator.getM4vExtraInfo(position, size); },
        [&](Iterator& iterator) { iterator.getMpeg4Headers(); },
        [&](Iterator& iterator) { iterator.getH264ExtraInfo(); },
    };
    const auto read = [](Iterator& iterator) {
        android::MediaBuffer* buffer = nullptr;
        EXPECT_EQ(android::OK, iterator.read(&buffer, nullptr));
        if (buffer != nullptr) buffer->release();
        return iterator.LastPosition();
    };
    for (const auto& inspect : inspections) {
        Iterated one({KeyFrame("01"), KeyFrame("02")});
        one.iterator.reset();
        const uint64_t first = read(one.iterator);
        inspect(one.iterator);
        EXPECT_EQ(first, read(one.iterator));
    }
}

TEST(SeekToPosition, FromTheEndOfTheFileReadingGoesOn) {
    Iterated one({KeyFrame("01"), KeyFrame("02")});
    const MatroskaExtReader::Cue& cue = *one.file.Segment.Cues[0];
    one.iterator.reset();
    for (int round = 0; round < 2; ++round) {
        for (const auto status :
             {status_t{android::OK}, status_t{android::OK}, status_t{android::ERROR_END_OF_STREAM}}) {
            android::MediaBuffer* buffer = nullptr;
            EXPECT_EQ(status, one.iterator.read(&buffer, nullptr)) << round;
            if (buffer != nullptr) buffer->release();
        }
        const uint64_t position = cue.PositionsOf(cue.Points[0])->CueClusterPosition;
        one.iterator.seekToPosition(static_cast<long long>(position), 0);
    }
}

TEST(FrameInspection, NoMoreIsStrippedThanThereIs) {
    Iterated looked({KeyFrame("000001B0 01")});
    long long position;
    unsigned int size;
    delete[] looked.iterator.getM4vExtraInfo(position, size);
    android::MatroskaExtIterator stripping(&looked.file, position, 9, 1, nullptr);
    stripping.reset();
    android::MediaBuffer* buffer = nullptr;
    ASSERT_EQ(android::OK, stripping.read(&buffer, nullptr));
    EXPECT_EQ(0u, buffer->range_length());
    buffer->release();
}

// A sequence set without its picture set does not end the search, the fiftieth frame does.
TEST(FrameInspection, ParameterSetsAreLookedForInFiftyFrames) {
    const Element half = KeyFrame("00000001 6742001EDA11E4 00000001 6588");
    for (const size_t inFront : {0u, 1u, 49u, 50u}) {
        Elements blocks(inFront, half);
        blocks.push_back(KeyFrame("00000001 6742001EDA11E4 00000001 68CE3880 00000001 6588"));
        EXPECT_EQ(inFront < 50, Iterated(blocks).iterator.getH264ExtraInfo() != nullptr) << inFront;
    }
}

struct Frame {
    int16_t timeMs;
    bool key;
    size_t size;
};

Element BlockOf(const Frame& frame) {
    return SimpleBlock(1, frame.timeMs, frame.key ? kKeyFrame : uint8_t{0}, Bytes(frame.size, 0xAB));
}

int64_t Find(const std::vector<Frame>& frames, uint32_t trackNumber = 1, int foreignBetween = 0) {
    Elements blocks;
    for (const Frame& frame : frames) {
        blocks.push_back(BlockOf(frame));
        for (int i = 0; i < foreignBetween; ++i) blocks.push_back(SimpleBlock(2, 0, kKeyFrame, {0}));
    }
    Iterated one(blocks, trackNumber);
    const int64_t found = one.iterator.findThumbnailTimeUs();
    android::MatroskaExtIterator walker(&one.file, 0, 0, 99, nullptr);
    EXPECT_FALSE(walker.advance());
    EXPECT_EQ(found, one.iterator.findThumbnailTimeUs());  // whoever has walked over the blocks since
    return found;
}

// `count` key frames 10 ms apart of which the one at `biggest` is the largest.
std::vector<Frame> KeyFrames(int count, int biggest) {
    std::vector<Frame> frames;
    for (int i = 0; i < count; ++i)
        frames.push_back({static_cast<int16_t>(i * 10), true, i == biggest ? size_t{90} : size_t{30}});
    return frames;
}

TEST(Thumbnail, IsTheLargestOfTheFirstKeyFrames) {
    EXPECT_EQ(20000, Find({{0, true, 30}, {10, false, 99}, {20, true, 40}, {30, true, 30}}));
    EXPECT_EQ(10000, Find({{10, true, 40}, {20, true, 40}}));  // the earlier of two
    EXPECT_EQ(0, Find({{10, false, 40}, {20, false, 50}}));
    EXPECT_EQ(0, Find({}));
    EXPECT_EQ(0, Find({{10, true, 40}}, 7));  // no such track
}

// Deliberate: each step looks at all key frames gathered so far once more, so that 20 looks are over after
// six.
TEST(Thumbnail, TheSearchEndsAfterSixKeyFramesInARow) {
    EXPECT_EQ(50000, Find(KeyFrames(12, 5)));
    EXPECT_EQ(0, Find(KeyFrames(12, 6)));
    EXPECT_EQ(20000, Find(KeyFrames(12, 2), 1, 3));  // a step over another track's block is one as well
    EXPECT_EQ(0, Find(KeyFrames(12, 3), 1, 3));
    for (const int16_t steps : {19, 20}) {  // behind the only key frame so far
        std::vector<Frame> frames(steps, Frame{0, false, 30});
        frames[0].key = true;
        frames.push_back({steps, true, 90});
        EXPECT_EQ(steps == 19 ? 19000 : 0, Find(frames));
    }
}

}  // namespace
}  // namespace testing_support
