#include <gtest/gtest.h>

#include <stdint.h>
#include <string.h>

#include <vector>

#include <media/stagefright/MediaBuffer.h>
#include <media/stagefright/MediaSource.h>
#include <media/stagefright/MetaData.h>

namespace android {
namespace {

TEST(MediaBuffer, RangeMovesNothingButTheRange) {
    MediaBuffer* buffer = new MediaBuffer(100);
    void* const data = buffer->data();
    buffer->meta_data()->setInt32('key ', 1);
    buffer->set_range(100, 0);
    buffer->set_range(30, 70);
    EXPECT_EQ(buffer->data(), data);
    EXPECT_EQ(buffer->size(), 100u);
    // The end is a plain sum: a range whose end wraps passes.
    buffer->set_range(SIZE_MAX, 1);
    EXPECT_EQ(buffer->range_offset(), SIZE_MAX);
    buffer->reset();
    EXPECT_EQ(buffer->range_offset(), 0u);
    EXPECT_EQ(buffer->range_length(), 100u);
    EXPECT_FALSE(buffer->meta_data()->hasData('key '));
    EXPECT_DEATH(buffer->set_range(31, 70), "CHECK");
    buffer->release();
}

// Metadata objects are used again; nobody may notice.
TEST(MediaBuffer, MetadataThatSomebodyStillHoldsIsNotUsedAgain) {
    MediaBuffer* buffer = new MediaBuffer(1);
    sp<MetaData> held = buffer->meta_data();
    held->setInt64(kKeyTime, 42);
    buffer->release();

    MediaBuffer* another = new MediaBuffer(1);
    wp<MetaData> watched = another->meta_data();
    another->release();

    std::vector<MediaBuffer*> next;
    for (int i = 0; i < 100; ++i) {
        next.push_back(new MediaBuffer(1));
        sp<MetaData> meta = next.back()->meta_data();
        EXPECT_NE(meta, held);
        EXPECT_FALSE(meta->hasData(kKeyTime));
        meta->setInt64(kKeyTime, i);
    }
    EXPECT_EQ(watched.promote(), nullptr);
    int64_t time = 0;
    EXPECT_TRUE(held->findInt64(kKeyTime, &time));
    EXPECT_EQ(time, 42);
    for (MediaBuffer* each : next) each->release();
    MediaBuffer* last = new MediaBuffer(1);
    EXPECT_FALSE(last->meta_data()->hasData(kKeyTime));
    last->release();
}

TEST(ReadOptions, SeekIsAnsweredInEveryCase) {
    MediaSource::ReadOptions options;
    int64_t time = -1;
    MediaSource::ReadOptions::SeekMode mode = MediaSource::ReadOptions::SEEK_NEXT_SYNC;
    EXPECT_FALSE(options.getSeekTo(&time, &mode));
    EXPECT_EQ(time, 0) << "written even without a seek";

    options.setSeekTo(5, MediaSource::ReadOptions::SEEK_CLOSEST);
    options.setLateBy(7);
    options.setNonBlocking();
    EXPECT_TRUE(options.getSeekTo(&time, &mode));
    EXPECT_EQ(time, 5);
    EXPECT_EQ(mode, MediaSource::ReadOptions::SEEK_CLOSEST);

    options.clearSeekTo();
    EXPECT_FALSE(options.getSeekTo(&time, &mode));
    EXPECT_EQ(time, 0);
    EXPECT_EQ(mode, MediaSource::ReadOptions::SEEK_CLOSEST_SYNC);
    EXPECT_EQ(options.getLateBy(), 7) << "has nothing to do with the seek";

    options.setSeekTo(-9);
    options.reset();
    EXPECT_FALSE(options.getSeekTo(&time, &mode));
    EXPECT_EQ(options.getLateBy(), 0);
    EXPECT_FALSE(options.getNonBlocking());
}

}  // namespace
}  // namespace android
