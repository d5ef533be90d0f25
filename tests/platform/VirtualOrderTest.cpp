// A plug-in built against the device's headers finds virtual functions by their place: the order is the
// interface.
#include <gtest/gtest.h>

#include <string.h>

#include <media/stagefright/DataSource.h>
#include <media/stagefright/FileSource.h>
#include <media/stagefright/MediaBuffer.h>
#include <media/stagefright/MediaExtractor.h>
#include <media/stagefright/MediaSource.h>
#include <media/stagefright/MetaData.h>

#if defined(__x86_64__)  // where the C++ ABI writes a virtual function's place plainly into the member
                         // pointer

namespace android {
namespace {

template <typename Member>
size_t SlotOf(Member member) {
    uintptr_t words[2];
    static_assert(sizeof(member) == sizeof(words), "a member pointer is two words");
    memcpy(words, &member, sizeof(words));
    EXPECT_EQ(words[0] & 1, 1u) << "not virtual";
    EXPECT_EQ(words[1], 0u) << "the object's address would have to move";
    return (words[0] - 1) / sizeof(void*);
}

constexpr size_t kRefBase = 6;  // two destructors and four hooks come first

TEST(VirtualOrder, DataSource) {
    const size_t slots[] = {
        SlotOf(&DataSource::initCheck),         SlotOf(&DataSource::readAt),
        SlotOf(&DataSource::getSize),           SlotOf(&DataSource::flags),
        SlotOf(&DataSource::reconnectAtOffset), SlotOf(&DataSource::DrmInitialization),
        SlotOf(&DataSource::getDrmInfo),        SlotOf(&DataSource::getUri),
        SlotOf(&DataSource::getMIMEType),
    };
    for (size_t i = 0; i < 9; ++i) EXPECT_EQ(slots[i], kRefBase + i) << i;
}

TEST(VirtualOrder, MediaExtractor) {
    const size_t slots[] = {
        SlotOf(&MediaExtractor::countTracks),
        SlotOf(&MediaExtractor::getTrack),
        SlotOf(&MediaExtractor::getTrackMetaData),
        SlotOf<sp<MetaData> (MediaExtractor::*)()>(&MediaExtractor::getMetaData),
        SlotOf(&MediaExtractor::flags),
        SlotOf(&MediaExtractor::getDrmTrackInfo),
        SlotOf(&MediaExtractor::setUID),
    };
    for (size_t i = 0; i < 7; ++i) EXPECT_EQ(slots[i], kRefBase + i) << i;
}

// RefBase is a virtual base here: the own functions come first.
TEST(VirtualOrder, MediaSource) {
    const size_t slots[] = {
        SlotOf(&MediaSource::start), SlotOf(&MediaSource::stop),  SlotOf(&MediaSource::getFormat),
        SlotOf(&MediaSource::read),  SlotOf(&MediaSource::pause), SlotOf(&MediaSource::setBuffers),
    };
    for (size_t i = 0; i < 6; ++i) EXPECT_EQ(slots[i], i) << i;
    EXPECT_EQ(sizeof(MediaSource::ReadOptions), 40u);
}

TEST(VirtualOrder, MediaBufferObserver) {
    EXPECT_EQ(SlotOf(&MediaBufferObserver::signalBufferReturned), 2u);
}

}  // namespace
}  // namespace android

#endif
