#include "device/Session.h"

#include <fmt/format.h>
#include <media/stagefright/MetaData.h>

#include "base/Failure.h"
#include "base/Interrupt.h"
#include "base/Trial.h"
#include "device/MetaDataKeys.h"
#include "source/OpenSource.h"

namespace mkvx {
namespace {

using android::MediaExtractor;
using android::MetaData;
using android::sp;

struct ConfigKey {
    uint32_t key;
    const char* name;
};
constexpr ConfigKey kConfigKeys[] = {
    {android::kKeyAVCC, "avcc"},        {android::kKeyHVCC, "hvcc"},
    {android::kKeyESDS, "esds"},        {android::kKeyVorbisInfo, "vinf"},
    {android::kKeyVorbisBooks, "vboo"}, {android::kKeyMpeg4Headers, "MP4C"},
};

std::optional<int32_t> int32Of(const sp<MetaData>& meta, uint32_t key) {
    int32_t value = 0;
    return meta->findInt32(key, &value) ? std::optional<int32_t>(value) : std::nullopt;
}

std::optional<int64_t> int64Of(const sp<MetaData>& meta, uint32_t key) {
    int64_t value = 0;
    return meta->findInt64(key, &value) ? std::optional<int64_t>(value) : std::nullopt;
}

std::optional<std::string> textOf(const sp<MetaData>& meta, uint32_t key) {
    const char* value = nullptr;
    return meta->findCString(key, &value) ? std::optional<std::string>(value) : std::nullopt;
}

std::vector<ConfigRecord> configOf(const sp<MetaData>& meta) {
    std::vector<ConfigRecord> records;
    for (const ConfigKey& candidate : kConfigKeys) {
        uint32_t type = 0;
        const void* data = nullptr;
        size_t size = 0;
        if (!meta->findData(candidate.key, &type, &data, &size)) continue;
        const auto* bytes = static_cast<const uint8_t*>(data);
        records.push_back({candidate.name, std::vector<uint8_t>(bytes, bytes + size)});
    }
    return records;
}

TrackInfo describeTrack(size_t index, const OfferedTrack& offered, const sp<MetaData>& meta) {
    TrackInfo track;
    track.index = index;
    track.number = offered.number;
    track.kind = offered.kind;
    track.mime = textOf(meta, android::kKeyMIMEType).value_or("");
    track.width = int32Of(meta, android::kKeyWidth);
    track.height = int32Of(meta, android::kKeyHeight);
    track.sampleRate = int32Of(meta, android::kKeySampleRate);
    track.channels = int32Of(meta, android::kKeyChannelCount);
    track.language = textOf(meta, android::kKeyMediaLanguage);
    track.durationUs = int64Of(meta, android::kKeyDuration);
    track.bitRate = int32Of(meta, android::kKeyBitRate);
    track.thumbnailUs = int64Of(meta, android::kKeyThumbnailTime);
    track.config = configOf(meta);
    return track;
}

FileInfo describeFile(const std::string& path, MediaExtractor& extractor,
                      const std::vector<OfferedTrack>& offered) {
    FileInfo info;
    info.path = path;
    info.containerMime = textOf(extractor.getMetaData(), android::kKeyMIMEType).value_or("");
    for (size_t i = 0; i < extractor.countTracks(); ++i) {
        const sp<MetaData> meta = extractor.getTrackMetaData(i, MediaExtractor::kIncludeExtensiveMetaData);
        if (meta == nullptr) throw FileFailure(path, "index " + std::to_string(i) + " has no format");
        info.tracks.push_back(describeTrack(i, offered[i], meta));
    }
    return info;
}

// Construction and the extensive metadata are where a file can stop the process.
void requireSurvivable(const Session& session, const std::string& path) {
    const auto end = whatStops([&] {
        const sp<MediaExtractor> extractor = session.newExtractor();
        for (size_t i = 0; extractor != nullptr && i < extractor->countTracks(); ++i)
            extractor->getTrackMetaData(i, MediaExtractor::kIncludeExtensiveMetaData);
    });
    throwIfInterrupted(path);
    if (end)
        throw UnusableFile(UnusableFile::Why::kStopsProcess, path,
                           "would stop the media process: " + *end + " (mkvx check tells what is behind it)",
                           *end);
}

SniffResult sniff(const ExtractorPlugin& plugin, const sp<android::DataSource>& source,
                  const std::string& path) {
    SniffResult result;
    result.path = path;
    android::String8 mime;
    sp<android::AMessage> meta;
    result.claimed = plugin.Sniffer(source, &mime, &result.confidence, &meta);
    if (result.claimed) result.mime = mime.string();
    return result;
}

}  // namespace

const char* toString(TrackKind kind) {
    switch (kind) {
        case TrackKind::kVideo:
            return "video";
        case TrackKind::kAudio:
            return "audio";
        case TrackKind::kSubtitle:
            return "subtitle";
    }
    return "";
}

UnusableFile::UnusableFile(Why why, const std::string& file, const std::string& reason,
                           const std::string& stoppedBy)
    : FileFailure(file, reason), mWhy(why), mStoppedBy(stoppedBy) {}

Session::Session(const ExtractorPlugin& plugin, const std::string& path, const SourceOptions& options)
    : Session(plugin, path, options.faults, openBytes(path, options)) {}

Session::Session(const ExtractorPlugin& plugin, const std::string& path, const FaultOptions& faults,
                 const sp<android::DataSource>& bytes)
    : mPlugin(plugin), mFaults(faults), mBytes(bytes) {
    beClaimed(path);
    requireSurvivable(*this, path);
    openExtractor(path);
    openReader(path);
    mInfo = describeFile(path, *mExtractor, mReader->offered());
    throwIfInterrupted(path);
}

void Session::beClaimed(const std::string& path) {
    const sp<FaultySource> source = new FaultySource(mBytes, mFaults, {});
    const bool isClaimed = sniff(mPlugin, source, path).claimed;
    throwIfInterrupted(path);
    if (!isClaimed)
        throw UnusableFile(UnusableFile::Why::kNotClaimed, path,
                           "is no Matroska or WebM file (it does not begin with 1A 45 DF A3)");
    mSniffed = source->reads();
}

void Session::openExtractor(const std::string& path) {
    mExtractor = newExtractor();
    throwIfInterrupted(path);
    if (mExtractor == nullptr)
        throw UnusableFile(UnusableFile::Why::kNoExtractor, path,
                           "the plug-in made no extractor for it (mkvx tree shows how far it can be read)");
}

void Session::openReader(const std::string& path) {
    mReader = std::make_unique<OwnReader>(newBytes());
    throwIfInterrupted(path);
    if (mReader->offered().size() != mExtractor->countTracks())
        throw FileFailure(
            path,
            "the loaded plug-in offers other tracks than this program's own reader finds (--plugin takes "
            "the one that was built with this program)");
    if (mReader->head().trackCount() == 0)
        throw UnusableFile(UnusableFile::Why::kNoTracks, path,
                           "no track description can be read from it (mkvx tree shows what is there)");
}

const TrackInfo* Session::masterTrack() const {
    for (const TrackInfo& track : mInfo.tracks)
        if (track.number == mReader->head().masterTrack() && track.kind != TrackKind::kSubtitle)
            return &track;
    return nullptr;
}

sp<android::MediaSource> Session::newSource(size_t index) const {
    return mExtractor->getTrack(index);
}

sp<MediaExtractor> Session::newExtractor() const {
    const sp<MediaExtractor> extractor = mPlugin.open(newBytes(), nullptr);
    if (extractor == nullptr && mExtractor != nullptr)  // the source has broken since
        throw FileFailure(mInfo.path, "the plug-in made no extractor for it a second time");
    return extractor;
}

sp<android::DataSource> Session::newBytes() const {
    if (!mFaults.any()) return mBytes;
    return new FaultySource(mBytes, mFaults, mSniffed);
}

sp<android::DataSource> Session::unsniffedBytes() const {
    return new FaultySource(mBytes, mFaults, {});
}

SniffResult sniffFile(const ExtractorPlugin& plugin, const std::string& path, const SourceOptions& options) {
    const SniffResult result = sniff(plugin, openSource(path, options), path);
    throwIfInterrupted(path);
    return result;
}

}  // namespace mkvx
