// The block and track helpers of EbmlWriter.h.
#include "support/EbmlWriter.h"

#include <algorithm>

namespace testing_support {

namespace {

// A run of FF bytes and the first smaller one add up to the size.
void AppendXiphSize(Bytes* out, size_t size) {
    for (; size >= 0xFF; size -= 0xFF) out->push_back(0xFF);
    out->push_back(static_cast<uint8_t>(size));
}

void AppendEbmlSizes(Bytes* out, const std::vector<Bytes>& frames) {
    for (size_t i = 0; i + 1 < frames.size(); ++i) {
        const auto size = static_cast<int64_t>(frames[i].size());
        const Bytes field = i == 0 ? Vint(static_cast<uint64_t>(size))
                                   : SignedVint(size - static_cast<int64_t>(frames[i - 1].size()));
        out->insert(out->end(), field.begin(), field.end());
    }
}

}  // namespace

Bytes Laced(Lacing lacing, const std::vector<Bytes>& frames) {
    if (lacing == Lacing::kNone) return Concat(frames);
    Bytes out = {static_cast<uint8_t>(frames.size() - 1)};
    if (lacing == Lacing::kXiph) {
        for (size_t i = 0; i + 1 < frames.size(); ++i) AppendXiphSize(&out, frames[i].size());
    } else if (lacing == Lacing::kEbml) {
        AppendEbmlSizes(&out, frames);
    }
    return Concat({out, Concat(frames)});
}

Bytes BlockBytes(uint64_t track, int16_t timecode, uint8_t flags, const Bytes& payload) {
    return Concat({Vint(track), BigEndian(static_cast<uint16_t>(timecode), 2), {flags}, payload});
}

Bytes BlockBytes(uint64_t track, int16_t timecode, uint8_t flags, Lacing lacing,
                 const std::vector<Bytes>& frames) {
    const auto lacingBits = static_cast<uint8_t>(static_cast<int>(lacing) << 1);
    return BlockBytes(track, timecode, flags | lacingBits, Laced(lacing, frames));
}

Element SimpleBlock(uint64_t track, int16_t timecode, uint8_t flags, const Bytes& frame) {
    return Bin(id::kSimpleBlock, BlockBytes(track, timecode, flags, frame));
}

Element SimpleBlock(uint64_t track, int16_t timecode, uint8_t flags, Lacing lacing,
                    const std::vector<Bytes>& frames) {
    return Bin(id::kSimpleBlock, BlockBytes(track, timecode, flags, lacing, frames));
}

Element BlockGroup(uint64_t track, int16_t timecode, const Bytes& frame, Elements others) {
    others.insert(others.begin(), Bin(id::kBlock, BlockBytes(track, timecode, 0, frame)));
    return Master(id::kBlockGroup, std::move(others));
}

Element Cluster(uint64_t timecode, Elements blocks) {
    blocks.insert(blocks.begin(), Uint(id::kClusterTimecode, timecode));
    return Master(id::kCluster, std::move(blocks));
}

Element EbmlHeader(const std::string& docType, uint64_t readVersion) {
    return Master(id::kEbml,
                  {Uint(id::kEbmlVersion, 1), Uint(id::kEbmlReadVersion, 1), Uint(id::kEbmlMaxIdLength, 4),
                   Uint(id::kEbmlMaxSizeLength, 8), Str(id::kDocType, docType), Uint(id::kDocTypeVersion, 4),
                   Uint(id::kDocTypeReadVersion, readVersion)});
}

Element Segment(Elements children) {
    return Master(id::kSegment, std::move(children));
}

Element Info(double duration, uint64_t timecodeScale) {
    return Master(id::kInfo, {Uint(id::kTimecodeScale, timecodeScale), Flt(id::kDuration, duration)});
}

Element Track(uint64_t number, uint64_t type, const std::string& codecId, Elements others) {
    Elements children = {Uint(id::kTrackNumber, number), Uint(id::kTrackUid, number + 1000),
                         Uint(id::kTrackType, type), Str(id::kCodecId, codecId)};
    children.insert(children.end(), others.begin(), others.end());
    return Master(id::kTrackEntry, std::move(children));
}

Element Video(uint64_t width, uint64_t height) {
    return Master(id::kVideo, {Uint(id::kPixelWidth, width), Uint(id::kPixelHeight, height)});
}

Element Audio(double samplingFrequency, uint64_t channels, Elements others) {
    others.insert(others.begin(),
                  {Flt(id::kSamplingFrequency, samplingFrequency), Uint(id::kChannels, channels)});
    return Master(id::kAudio, std::move(others));
}

Element Mpeg2Track(uint64_t number, Elements others) {
    others.insert(others.begin(), Video(64, 48));
    return Track(number, kVideoType, "V_MPEG2", std::move(others));
}

Element Mp3Track(uint64_t number, Elements others) {
    others.insert(others.begin(), Audio(44100, 2));
    return Track(number, kAudioType, "A_MPEG/L3", std::move(others));
}

Element TextTrack(uint64_t number, const std::string& codecId) {
    return Track(number, kSubtitleType, codecId);
}

Element Private(const Bytes& bytes) {
    return Bin(id::kCodecPrivate, bytes);
}

Bytes BitmapHeader(const std::string& compression) {
    Bytes header(40);
    header[0] = 40;
    std::copy(compression.begin(), compression.end(), header.begin() + 16);
    return header;
}

Document OneTrack(const Elements& blocks, Elements trackParts) {
    return Write(
        {EbmlHeader(), Segment({Info(1000), Master(id::kTracks, {Mpeg2Track(1, std::move(trackParts))}),
                                Cluster(0, blocks)})});
}

Element SeekHead(const std::vector<std::pair<uint32_t, std::string>>& idAndLabel) {
    Elements entries;
    for (const auto& entry : idAndLabel) {
        entries.push_back(Master(
            id::kSeek, {IdValue(id::kSeekId, entry.first), PositionOf(id::kSeekPosition, entry.second)}));
    }
    return Master(id::kSeekHead, std::move(entries));
}

Element CuePoint(uint64_t time, uint64_t track, const std::string& clusterLabel) {
    return Master(id::kCuePoint,
                  {Uint(id::kCueTime, time),
                   Master(id::kCueTrackPositions,
                          {Uint(id::kCueTrack, track), PositionOf(id::kCueClusterPosition, clusterLabel)})});
}

Element Encoding(uint64_t order, uint64_t type, uint64_t algorithm, const Bytes& settings) {
    Elements compression = {Uint(id::kContentCompAlgo, algorithm)};
    if (!settings.empty()) compression.push_back(Bin(id::kContentCompSettings, settings));
    return Master(id::kContentEncoding,
                  {Uint(id::kContentEncodingOrder, order), Uint(id::kContentEncodingScope, 1),
                   Uint(id::kContentEncodingType, type), Master(id::kContentCompression, compression)});
}

}  // namespace testing_support
