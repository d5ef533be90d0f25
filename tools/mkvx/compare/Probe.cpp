#include "compare/Probe.h"

#include <fmt/format.h>
#include <media/stagefright/MediaBuffer.h>
#include <media/stagefright/MediaErrors.h>
#include <media/stagefright/MediaSource.h>
#include <media/stagefright/MetaData.h>
#include <unistd.h>

#include "base/Digest.h"
#include "base/Text.h"
#include "device/MetaDataKeys.h"
#include "device/Plugin.h"
#include "device/TrackReader.h"
#include "seek/Targets.h"

namespace mkvx {
namespace {

using android::MetaData;
using android::sp;

// A source that answers only errors is left after so many in a row.
constexpr int kMostErrors = 64;

// What extractors of the framework say of a file and its tracks.
constexpr uint32_t kTrackKeys[] = {
    android::kKeyMIMEType,      android::kKeyWidth,          android::kKeyHeight,
    android::kKeyDisplayWidth,  android::kKeyDisplayHeight,  android::kKeySARWidth,
    android::kKeySARHeight,     android::kKeyRotation,       android::kKeyFrameRate,
    android::kKeySampleRate,    android::kKeyChannelCount,   android::kKeyChannelMask,
    android::kKeyBitRate,       android::kKeyMaxInputSize,   android::kKeyDuration,
    android::kKeyThumbnailTime, android::kKeyMediaLanguage,  android::kKeyTitle,
    android::kKeyTrackID,       android::kKeyAVCC,           android::kKeyHVCC,
    android::kKeyESDS,          android::kKeyVorbisInfo,     android::kKeyVorbisBooks,
    android::kKeyMpeg4Headers,  android::kKeyD263,           android::kKeyIsADTS,
    android::kKeyEncoderDelay,  android::kKeyEncoderPadding, android::kKeyIsDRM,
};

std::string nameOf(uint32_t key) {
    return printable(std::string{char(key >> 24), char(key >> 16), char(key >> 8), char(key)});
}

class Prober {
  public:
    Prober(const std::string& plugin, const sp<android::DataSource>& bytes, size_t seeks, std::FILE* out)
        : mPlugin(loadPlugin(plugin)), mBytes(bytes), mSeeks(seeks), mOut(out) {}

    void run() {
        if (!open()) return;
        listTracks();
        readUnits();
        for (size_t i = 0; i < mSources.size(); ++i)
            if (!isSubtitle(i)) seekAbout(i);
    }

  private:
    void say(Part part, const std::string& text) { fmt::print(mOut, "{}{}\n", int(part), text); }

    bool open() {
        android::String8 mime;
        float confidence = 0;
        sp<android::AMessage> meta;
        const bool isClaimed = mPlugin.Sniffer(mBytes, &mime, &confidence, &meta);
        say(Part::kOpening, isClaimed ? fmt::format("claimed as {}, {}", mime.string(), confidence)
                                      : std::string("not claimed"));
        if (!isClaimed) return false;
        mExtractor = mPlugin.open(mBytes, nullptr);
        if (mExtractor == nullptr) {
            say(Part::kOpening, "no extractor");
            return false;
        }
        say(Part::kOpening, fmt::format("file: {}", textOf(mExtractor->getMetaData())));
        say(Part::kOpening,
            fmt::format("{}, flags {}", counted(mExtractor->countTracks(), "track"), mExtractor->flags()));
        return true;
    }

    // All values, by key.
    std::string textOf(const sp<MetaData>& meta) {
        if (meta == nullptr) return "no metadata";
        std::string text;
        for (const uint32_t key : kTrackKeys) {
            uint32_t type = 0;
            const void* data = nullptr;
            size_t size = 0;
            if (meta->findData(key, &type, &data, &size))
                text += fmt::format("{}{} {}", text.empty() ? "" : ", ", nameOf(key),
                                    valueOf(meta, key, data, size));
        }
        return text;
    }

    std::string valueOf(const sp<MetaData>& meta, uint32_t key, const void* data, size_t size) {
        const char* word = nullptr;
        int32_t number = 0;
        int64_t large = 0;
        if (meta->findCString(key, &word)) return printable(word);
        if (meta->findInt32(key, &number)) return std::to_string(number);
        if (meta->findInt64(key, &large)) return std::to_string(large);
        return fmt::format("{}, SHA-1 {}", counted(size, "byte"), mSha1.hex(data, size));
    }

    void listTracks() {
        for (size_t i = 0; i < mExtractor->countTracks(); ++i) {
            const sp<MetaData> meta =
                mExtractor->getTrackMetaData(i, android::MediaExtractor::kIncludeExtensiveMetaData);
            say(Part::kTracks, fmt::format("index {}: {}", i, textOf(meta)));
            mSources.push_back({mExtractor->getTrack(i)});
            const char* mime = "";
            if (meta != nullptr) {
                meta->findCString(android::kKeyMIMEType, &mime);
                meta->findInt64(android::kKeyDuration, &mSources.back().durationUs);
            }
            mSources.back().isSubtitle = std::string(mime).compare(0, 5, "text/") == 0;
            if (!start(mSources.back())) say(Part::kTracks, fmt::format("index {}: does not start", i));
        }
    }

    // What is read of one track.
    struct Source {
        sp<android::MediaSource> source;
        int64_t durationUs = 0, timeUs = INT64_MIN;
        uint64_t units = 0;
        int errors = 0;  // in a row
        bool isSubtitle = false, isStarted = false, isDone = false;
    };

    bool isSubtitle(size_t index) const { return mSources[index].isSubtitle; }

    static bool start(Source& source) {
        source.isStarted = source.source != nullptr && source.source->start() == android::OK;
        source.isDone = !source.isStarted;
        return source.isStarted;
    }

    // The track that is furthest behind first, and subtitles as soon as they are there.
    void readUnits() {
        while (const auto index = furthestBehind()) {
            readOne(*index);
            for (size_t i = 0; i < mSources.size(); ++i)
                while (isSubtitle(i) && mSources[i].isStarted && readOne(i)) {
                }
        }
        for (Source& source : mSources)
            if (source.isStarted) source.source->stop();
    }

    std::optional<size_t> furthestBehind() const {
        std::optional<size_t> chosen;
        for (size_t i = 0; i < mSources.size(); ++i)
            if (!mSources[i].isDone && !isSubtitle(i) &&
                (!chosen || mSources[i].timeUs < mSources[*chosen].timeUs))
                chosen = i;
        return chosen;
    }

    bool readOne(size_t index) {
        Source& source = mSources[index];
        const auto [status, text] = readUnit(source, nullptr);
        if (status == android::OK) {
            source.errors = 0;
            say(Part::kUnits, fmt::format("index {}, unit {}: {}", index, source.units++, text));
            return true;
        }
        source.isDone = status == android::ERROR_END_OF_STREAM || ++source.errors == kMostErrors;
        if (!source.isSubtitle)
            say(Part::kUnits, fmt::format("index {}, unit {}: {}", index, source.units, text));
        return false;
    }

    std::pair<android::status_t, std::string> readUnit(Source& source,
                                                       const android::MediaSource::ReadOptions* options) {
        android::MediaBuffer* buffer = nullptr;
        const android::status_t status = source.source->read(&buffer, options);
        if (status != android::OK || buffer == nullptr)
            return {
                status == android::OK ? android::UNKNOWN_ERROR : status,
                status == android::ERROR_END_OF_STREAM ? "end of stream" : fmt::format("error {}", status)};
        const BufferPtr owned(buffer);
        TrackInfo track;
        track.kind = source.isSubtitle ? TrackKind::kSubtitle : TrackKind::kVideo;
        const Unit unit = describeUnit(track, *buffer, mSha1);
        source.timeUs = unit.timeUs;
        return {status, fmt::format("{} us{}{}, {}, SHA-1 {}", unit.timeUs,
                                    unit.endUs ? fmt::format(" to {} us", *unit.endUs) : "",
                                    unit.sync ? ", key" : "", counted(unit.size, "byte"), unit.sha1)};
    }

    // On an extractor of its own, as after opening.
    void seekAbout(size_t index) {
        const sp<android::MediaExtractor> extractor = mPlugin.open(mBytes, nullptr);
        Source source;
        if (extractor != nullptr) source.source = extractor->getTrack(index);
        if (!start(source)) return say(Part::kSeeks, fmt::format("index {}: does not start", index));
        const int64_t durationUs = mSources[index].durationUs;
        std::vector<int64_t> targets = seekTargets(mSeeks, durationUs);
        targets.insert(targets.end(), {0, durationUs - 1, durationUs, -1});
        for (const int64_t target : targets) {
            android::MediaSource::ReadOptions options;
            options.setSeekTo(target);
            say(Part::kSeeks,
                fmt::format("index {}, seek to {} us: {}", index, target, readUnit(source, &options).second));
        }
        source.source->stop();
    }

    const ExtractorPlugin mPlugin;
    const sp<android::DataSource> mBytes;
    const size_t mSeeks;
    std::FILE* const mOut;
    Sha1 mSha1;
    sp<android::MediaExtractor> mExtractor;
    std::vector<Source> mSources;
};

}  // namespace

void probe(const std::string& plugin, const OpenBytes& openBytes, size_t seeks, int out) {
    std::FILE* file = ::fdopen(::dup(out), "w");
    if (file == nullptr) return;
    std::setvbuf(file, nullptr, _IOLBF, 0);  // what was said before the process ends is not lost
    try {
        Prober(plugin, openBytes(), seeks, file).run();
    } catch (const std::exception& error) {
        fmt::print(file, "{}{}\n", kProbeFailed, printable(error.what()));
    }
    std::fclose(file);
}

}  // namespace mkvx
