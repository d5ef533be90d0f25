#include <media/stagefright/MediaExtractor.h>

#include <media/stagefright/MetaData.h>

namespace android {

// Create() stands in ExtractorPlugin.cpp, beside the plug-ins that it asks.

sp<MetaData> MediaExtractor::getMetaData() {
    return new MetaData;
}

uint32_t MediaExtractor::flags() const {
    return CAN_SEEK_BACKWARD | CAN_SEEK_FORWARD | CAN_PAUSE | CAN_SEEK;
}

char* MediaExtractor::getDrmTrackInfo(size_t /*trackID*/, int* /*len*/) {
    return NULL;
}

void MediaExtractor::setUID(uid_t /*uid*/) {}

}  // namespace android
