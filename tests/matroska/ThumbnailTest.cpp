// The choice of a frame that stands for a file: the largest of the first key frames.
#include "matroska/MatroskaFixture.h"
#include "matroska/MatroskaExtIterator.h"
#include "matroska/reader/MatroskaReader.h"

namespace testing_support {
namespace {

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
    const Document file = Movie({Mpeg2Track(1)}, {Cluster(0, blocks)});
    MatroskaExtReader::CMatroskaFile opened{sp<android::DataSource>(new FaultySource(file.bytes))};
    EXPECT_EQ(MatroskaExtReader::kOk, opened.Init());
    android::MatroskaExtIterator iterator(&opened, 0, 0, trackNumber, nullptr);
    const int64_t found = iterator.findThumbnailTimeUs();
    android::MatroskaExtIterator walker(&opened, 0, 0, 99, nullptr);
    EXPECT_FALSE(walker.advance());
    EXPECT_EQ(found, iterator.findThumbnailTimeUs());  // whoever has walked over the blocks since
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
}

}  // namespace
}  // namespace testing_support
