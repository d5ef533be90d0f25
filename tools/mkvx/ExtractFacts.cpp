#include "ExtractFacts.h"

#include <algorithm>
#include <optional>

#include "Log.h"
#include "Source.h"
#include "matroska/MatroskaExtExtractor.h"

namespace mkvx {
namespace {

// Walks descriptors whose sizes come least significant group first, as the device's players read them.
class EsdsCursor {
  public:
    explicit EsdsCursor(const Bytes& bytes) : mBytes(bytes) {}

    // Past the tag and the size of a descriptor; its size, or nothing when another tag stands here.
    std::optional<uint64_t> enter(uint8_t tag) {
        if (mAt >= mBytes.size() || mBytes[mAt++] != tag) return std::nullopt;
        uint64_t size = 0;
        for (int shift = 0; shift < 35 && mAt < mBytes.size(); shift += 7) {
            const uint8_t group = mBytes[mAt++];
            size |= uint64_t(group & 0x7F) << shift;
            if ((group & 0x80) == 0) return size;
        }
        return std::nullopt;
    }
    void skip(size_t bytes) { mAt = std::min(mBytes.size(), mAt + bytes); }
    size_t at() const { return mAt; }

  private:
    const Bytes& mBytes;
    size_t mAt = 0;
};

}  // namespace

Bytes configOf(const TrackInfo& info, const char* key) {
    for (const ConfigRecord& record : info.config)
        if (record.key == key) return record.bytes;
    return {};
}

Bytes specificInfoOf(const Bytes& esds) {
    EsdsCursor cursor(esds);
    if (!cursor.enter(3)) return {};
    cursor.skip(3);  // identifier and flags
    if (!cursor.enter(4)) return {};
    cursor.skip(13);  // object type, stream type, buffer size, bit rates
    const auto size = cursor.enter(5);
    if (!size) return {};
    const size_t end = std::min<uint64_t>(esds.size(), cursor.at() + *size);
    return Bytes(esds.begin() + ptrdiff_t(cursor.at()), esds.begin() + ptrdiff_t(end));
}

ExtractTrack factsOf(const std::string& path, const TrackInfo& info) {
    ExtractTrack track;
    track.info = info;
    track.specificInfo = specificInfoOf(configOf(info, "esds"));
    MuteLog mute;
    const android::sp<android::MatroskaExtExtractor> extractor =
        new android::MatroskaExtExtractor(openFile(path));
    const MatroskaExtReader::TrackEntry* entry = extractor->File()->FindTrack(info.number);
    if (entry == nullptr) return track;
    const auto& id = entry->CodecID;
    const auto& config = entry->CodecPrivate;
    if (id.data() != nullptr) track.codecId.assign(reinterpret_cast<const char*>(id.data()), id.TextLength());
    if (!config.empty()) track.codecPrivate.assign(config.data(), config.data() + config.size());
    track.bitsPerSample = uint32_t(entry->Audio.BitDepth.Get());
    return track;
}

}  // namespace mkvx
