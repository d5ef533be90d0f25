// Three of a plug-in's four functions: nothing can be opened with it.
#include <utils/Errors.h>
#include <utils/SortedVector.h>
#include <utils/String8.h>
#include <media/stagefright/MediaExtractor.h>
#include <media/stagefright/foundation/AMessage.h>

namespace android {

bool getMimeString(String8* mime);
bool getSupportExtension(SortedVector<String8>& extensions);
bool Sniffer(const sp<DataSource>& source, String8* mime, float* confidence, sp<AMessage>* meta);

bool getMimeString(String8*) {
    return true;
}
bool getSupportExtension(SortedVector<String8>&) {
    return true;
}
bool Sniffer(const sp<DataSource>&, String8*, float*, sp<AMessage>*) {
    return false;
}

}  // namespace android
