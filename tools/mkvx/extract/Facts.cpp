#include "extract/Facts.h"

#include "base/Log.h"
#include "device/CodecRecords.h"
#include "matroska/MatroskaExtExtractor.h"

namespace mkvx {
Bytes configOf(const TrackInfo& info, const char* key) {
    for (const ConfigRecord& record : info.config)
        if (record.key == key) return record.bytes;
    return {};
}

ExtractTrack factsOf(const Session& session, const TrackInfo& info) {
    ExtractTrack track;
    track.info = info;
    track.specificInfo = specificInfo(configOf(info, "esds"));
    MuteLog mute;
    const android::sp<android::MatroskaExtExtractor> extractor =
        new android::MatroskaExtExtractor(session.newBytes());
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
