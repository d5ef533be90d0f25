// A plug-in for files that begin with "TEST", with a fixed confidence that is the fifth byte in hundredths.
#include <utils/Errors.h>
#include <utils/SortedVector.h>
#include <utils/String8.h>

#include <media/stagefright/DataSource.h>
#include <media/stagefright/MediaExtractor.h>
#include <media/stagefright/MediaSource.h>
#include <media/stagefright/MetaData.h>
#include <media/stagefright/foundation/AMessage.h>

#include <string.h>

namespace android {

namespace {

class TestExtractor : public MediaExtractor {
  public:
    explicit TestExtractor(const sp<AMessage>& meta) : mMeta(meta) { setDrmFlag(true); }

    // What the sniffer left in its message.
    size_t countTracks() override {
        int32_t tracks = 0;
        return (mMeta != NULL && mMeta->findInt32("tracks", &tracks)) ? static_cast<size_t>(tracks) : 0;
    }
    sp<MediaSource> getTrack(size_t) override { return NULL; }
    sp<MetaData> getTrackMetaData(size_t, uint32_t) override { return NULL; }

  private:
    sp<AMessage> mMeta;
};

}  // namespace

bool getMimeString(String8* mime);
bool getSupportExtension(SortedVector<String8>& extensions);
bool Sniffer(const sp<DataSource>& source, String8* mime, float* confidence, sp<AMessage>* meta);
MediaExtractor* createInstance(const sp<DataSource>& source, const sp<AMessage>& meta);

bool getMimeString(String8* mime) {
    mime->setTo("video/x-test");
    return true;
}

bool getSupportExtension(SortedVector<String8>& extensions) {
    extensions.add(String8(".test"));
    return true;
}

bool Sniffer(const sp<DataSource>& source, String8* mime, float* confidence, sp<AMessage>* meta) {
    uint8_t head[5];
    if (source->readAt(0, head, sizeof(head)) != static_cast<ssize_t>(sizeof(head))) return false;
    if (memcmp(head, "TEST", 4) != 0) return false;
    // Not the plug-in's own type: the winner is found by who said it, not by what was said.
    mime->setTo("video/x-test-variant");
    *confidence = static_cast<float>(head[4]) / 100.0f;
    *meta = new AMessage;
    (*meta)->setInt32("tracks", 3);
    return true;
}

#ifdef TEST_PLUGIN_WHOLE
MediaExtractor* createInstance(const sp<DataSource>& /*source*/, const sp<AMessage>& meta) {
    return new TestExtractor(meta);
}
#endif

}  // namespace android
