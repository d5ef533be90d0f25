#include <media/stagefright/DataSource.h>

#include <media/stagefright/foundation/AMessage.h>

namespace android {

namespace {

// Reads `count` bytes, at most 8, as one big-endian number.
bool readBigEndian(DataSource* source, off64_t offset, size_t count, uint64_t* value) {
    uint8_t bytes[8];
    *value = 0;
    if (source->readAt(offset, bytes, count) != static_cast<ssize_t>(count)) return false;
    for (size_t i = 0; i < count; ++i) *value = (*value << 8) | bytes[i];
    return true;
}

template <typename T>
bool getUInt(DataSource* source, off64_t offset, size_t count, T* value) {
    uint64_t wide;
    const bool complete = readBigEndian(source, offset, count, &wide);
    *value = static_cast<T>(wide);
    return complete;
}

}  // namespace

Mutex DataSource::gSnifferMutex;
List<DataSource::SnifferFunc> DataSource::gSniffers;

status_t DataSource::getSize(off64_t* size) {
    *size = 0;
    return ERROR_UNSUPPORTED;
}

uint32_t DataSource::flags() {
    return 0;
}

status_t DataSource::reconnectAtOffset(off64_t /*offset*/) {
    return ERROR_UNSUPPORTED;
}

sp<DecryptHandle> DataSource::DrmInitialization(const char* /*mime*/) {
    return NULL;
}

void DataSource::getDrmInfo(sp<DecryptHandle>& /*handle*/, DrmManagerClient** /*client*/) {}

String8 DataSource::getUri() {
    return String8();
}

String8 DataSource::getMIMEType() const {
    return String8("application/octet-stream");
}

bool DataSource::getUInt16(off64_t offset, uint16_t* value) {
    return getUInt(this, offset, 2, value);
}
bool DataSource::getUInt24(off64_t offset, uint32_t* value) {
    return getUInt(this, offset, 3, value);
}
bool DataSource::getUInt32(off64_t offset, uint32_t* value) {
    return getUInt(this, offset, 4, value);
}
bool DataSource::getUInt64(off64_t offset, uint64_t* value) {
    return getUInt(this, offset, 8, value);
}

bool DataSource::sniff(String8* mimeType, float* confidence, sp<AMessage>* meta) {
    SnifferFunc winner;
    return sniffForWinner(mimeType, confidence, meta, &winner);
}

bool DataSource::sniffForWinner(String8* mimeType, float* confidence, sp<AMessage>* meta,
                                SnifferFunc* winner) {
    *mimeType = String8();
    *confidence = 0.0f;
    meta->clear();
    *winner = nullptr;

    List<SnifferFunc> sniffers;
    {
        Mutex::Autolock autoLock(gSnifferMutex);
        sniffers = gSniffers;
    }
    for (SnifferFunc sniffer : sniffers) {
        String8 newMimeType;
        float newConfidence = 0.0f;
        sp<AMessage> newMeta;
        if (!sniffer(this, &newMimeType, &newConfidence, &newMeta)) continue;
        if (newConfidence > *confidence) {
            *mimeType = newMimeType;
            *confidence = newConfidence;
            *meta = newMeta;
            *winner = sniffer;
        }
    }
    return *confidence > 0.0f;
}

void DataSource::RegisterSniffer_l(SnifferFunc sniffer) {
    for (SnifferFunc known : gSniffers) {
        if (known == sniffer) return;
    }
    gSniffers.push_back(sniffer);
}

void DataSource::RegisterDefaultSniffers() {}

}  // namespace android
