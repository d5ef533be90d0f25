#include "extract/Facts.h"

#include "device/CodecRecords.h"

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
    const std::optional<FileTrack> entry = session.reader().head().findTrack(info.number);
    if (!entry) return track;
    track.codecId = entry->codecId;
    track.codecPrivate = entry->codecPrivate;
    track.bitsPerSample = uint32_t(entry->bitsPerSample);
    for (const FrameEncoding& encoding : entry->encodings)
        track.hasEncodedFrames = track.hasEncodedFrames || encoding.coversFrames;
    return track;
}

}  // namespace mkvx
