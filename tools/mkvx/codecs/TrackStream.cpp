#include "codecs/TrackStream.h"

#include "device/CodecRecords.h"
#include "device/TrackReader.h"

namespace mkvx {

StreamConfig streamConfig(const TrackInfo& track, const Bytes& codecPrivate) {
    StreamConfig config;
    for (const ConfigRecord& record : track.config) {
        if (record.key == "avcc") config.avcc = record.bytes;
        if (record.key == "hvcc") config.hvcc = record.bytes;
        if (record.key == "esds") config.specificInfo = specificInfo(record.bytes);
        if (record.key == "MP4C") config.mpeg4Headers = record.bytes;
    }
    config.codecPrivate = codecPrivate;
    return config;
}

StreamFacts readStreamFacts(const Session& session, const TrackInfo& track) {
    const std::optional<FileTrack> entry = session.reader().head().findTrack(track.number);
    StreamFacts facts = factsOfConfig(track.mime, streamConfig(track, entry ? entry->codecPrivate : Bytes()));
    if (track.kind != TrackKind::kVideo || (!facts.profile.empty() && facts.bitDepth != 0)) return facts;
    TrackReader reader(session.newSource(track.index));
    if (const BufferPtr unit = reader.next())
        complete(facts,
                 factsOfUnit(track.mime, static_cast<const uint8_t*>(unit->data()) + unit->range_offset(),
                             unit->range_length()));
    return facts;
}

}  // namespace mkvx
