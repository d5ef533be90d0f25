// DataSource: random access to the bytes of a medium.
//
// Offsets and sizes are bytes, 64-bit also on 32-bit devices. Implementations allow calls from several
// threads. Made with `new`, owned by sp<>. The order of the virtual functions is the device's.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

#include <utils/Errors.h>
#include <utils/KeyedVector.h>
#include <utils/List.h>
#include <utils/RefBase.h>
#include <utils/String8.h>
#include <utils/threads.h>

#include <drm/DrmManagerClient.h>
#include <media/stagefright/MediaErrors.h>

namespace android {

struct AMessage;

namespace host {
class ExtractorRegistry;
}

class DataSource : public RefBase {
  public:
    enum Flags {
        kWantsPrefetching = 1,
        kStreamedFromLocalHost = 2,
        kIsCachingDataSource = 4,
        kIsHTTPBasedSource = 8,
    };

    // Recognises a format: true with its MIME type and a confidence (more than 0, at most 1) when it does. It
    // writes both before it returns true and reads neither; `meta` may be left alone.
    typedef bool (*SnifferFunc)(const sp<DataSource>& source, String8* mimeType, float* confidence,
                                sp<AMessage>* meta);

    DataSource() {}

    // OK, or why the source cannot be used.
    virtual status_t initCheck() const = 0;
    // The number of bytes read: fewer than `size` at the end, 0 at or behind it; negative on failure.
    virtual ssize_t readAt(off64_t offset, void* data, size_t size) = 0;
    // The total size. Here: 0 and ERROR_UNSUPPORTED, for a source that does not know.
    virtual status_t getSize(off64_t* size);
    // A union of Flags. Here: none.
    virtual uint32_t flags();
    virtual status_t reconnectAtOffset(off64_t offset);
    // No handle, no client: the source is not protected.
    virtual sp<DecryptHandle> DrmInitialization(const char* mime = NULL);
    virtual void getDrmInfo(sp<DecryptHandle>& handle, DrmManagerClient** client);
    virtual String8 getUri();
    // What the transport says; "application/octet-stream" when it says nothing.
    virtual String8 getMIMEType() const;

    // Big-endian numbers. False, with *value 0, unless all bytes could be read.
    bool getUInt16(off64_t offset, uint16_t* value);
    bool getUInt24(off64_t offset, uint32_t* value);
    bool getUInt32(off64_t offset, uint32_t* value);
    bool getUInt64(off64_t offset, uint64_t* value);

    // Asks every registered sniffer and keeps the answer with the strictly highest confidence, the earlier
    // one on a tie. Whether any answered with more than 0; without one the outputs are empty, 0 and null.
    bool sniff(String8* mimeType, float* confidence, sp<AMessage>* meta);

    // The host has no formats built in: sniffers come from host/ExtractorPlugin.h.
    static void RegisterDefaultSniffers();

  protected:
    ~DataSource() override {}

  private:
    friend class host::ExtractorRegistry;

    // Asks the sniffers as sniff() does and also tells which one won.
    bool sniffForWinner(String8* mimeType, float* confidence, sp<AMessage>* meta, SnifferFunc* winner);

    static Mutex gSnifferMutex;
    static List<SnifferFunc> gSniffers;
    // Adds a sniffer, once. The caller holds gSnifferMutex.
    static void RegisterSniffer_l(SnifferFunc sniffer);

    DataSource(const DataSource&);
    DataSource& operator=(const DataSource&);
};

}  // namespace android
