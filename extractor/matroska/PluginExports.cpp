#define LOG_TAG "MatroskaExtExtractor"
#include "matroska/PluginExports.h"

#include <android/log.h>
#include <media/stagefright/DataSource.h>
#include <media/stagefright/foundation/AMessage.h>
#include <string.h>

#include "matroska/MatroskaExtExtractor.h"
#include "matroska/reader/MatroskaReader.h"
#include "utils/MimeTypes.h"

namespace android {

namespace {

constexpr unsigned char kEbmlMagic[] = {0x1A, 0x45, 0xDF, 0xA3};
constexpr float kWebmConfidence = 0.5f;
constexpr float kConfidence = 0.91f;
// Fixed numbers of two log lines, which tools on the device look for; not lines of this file.
constexpr int kWebmLogLine = 1326, kNotWebmLogLine = 1329;

}  // namespace

bool getMimeString(String8* mime) {
    mime->setTo(MEDIA_MIMETYPE_CONTAINER_MATROSKA_EXT);
    return true;
}

bool getSupportExtension(SortedVector<String8>& extensions) {
    for (const char* extension : {".mkv", ".mka", ".mks"}) extensions.add(String8(extension));
    return true;
}

bool Sniffer(const sp<DataSource>& source, String8* mimeType, float* confidence, sp<AMessage>* /* meta */) {
    unsigned char magic[sizeof(kEbmlMagic)];
    if (source->readAt(0, magic, sizeof(magic)) != static_cast<ssize_t>(sizeof(magic)) ||
        memcmp(magic, kEbmlMagic, sizeof(magic)) != 0) {
        return false;
    }
    MatroskaExtReader::CMatroskaFile file(source);
    const sp<MatroskaExtReader::CMatroskaNode> root = new MatroskaExtReader::CMatroskaNode(&file);
    const MatroskaExtReader::CMatroskaFile::Opening opening(&file);
    (void)file.ParseHeader(root.get());  // from here on the file is claimed, whatever the parse found
    mimeType->setTo(MEDIA_MIMETYPE_CONTAINER_MATROSKA_EXT);
    const bool isWebm = strcmp(file.Header.DocType.c_str(), "webm") == 0;
    if (isWebm) {
        __android_log_print(ANDROID_LOG_DEBUG, LOG_TAG, "[%s %d] webm", "Sniffer", kWebmLogLine);
    } else {
        __android_log_print(ANDROID_LOG_DEBUG, LOG_TAG, "[%s %d] not webm", "Sniffer", kNotWebmLogLine);
    }
    *confidence = isWebm ? kWebmConfidence : kConfidence;
    return true;
}

MediaExtractor* createInstance(const sp<DataSource>& source, const sp<AMessage>& /* meta */) {
    return new MatroskaExtExtractor(source);
}

}  // namespace android
