// The whole plug-in: sniffed, opened and driven through the framework's interfaces as a script says.
#include <host/AllocationLimit.h>
#include <media/stagefright/foundation/AMessage.h>
#include <media/stagefright/MediaErrors.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <thread>
#include <vector>

#include "Assertions.h"
#include "FuzzTarget.h"
#include "PluginScript.h"
#include "matroska/CodecPrivate.h"
#include "matroska/MatroskaExtExtractor.h"
#include "matroska/MatroskaExtIterator.h"
#include "matroska/PluginExports.h"
#include "matroska/reader/MatroskaReader.h"
#include "support/Listing.h"
#include "utils/CodecTags.h"
#include "utils/MimeTypes.h"

namespace fuzz {

namespace {

using android::MediaBuffer;
using android::MediaExtractor;
using android::MediaSource;
using android::MetaData;
using android::sp;
using android::status_t;
using testing_support::Faults;
using testing_support::FaultySource;

constexpr size_t kMostTracks = 6;        // driven; a file may have more
constexpr size_t kMostUnits = 1024;      // read of one track
constexpr size_t kMostBytes = 8u << 20;  // the same, in bytes
// The budget of opening; one read may go beyond its bytes.
constexpr uint64_t kFreeReads = 64, kReadsPerByte = 2;
constexpr uint64_t kFreeBytes = 1u << 20, kBytesPerByte = 16 + 1;

// ---- a file as it is opened

struct Opened {
    sp<FaultySource> source;
    sp<MediaExtractor> extractor;  // null when an intended assertion ended the opening
};

// The condition that the first track with unsound Vorbis headers breaks; null when there is none.
const char* ExpectedAssertion(const Bytes& file, const Faults& faults) {
    MatroskaExtReader::CMatroskaFile reader(new FaultySource(file, faults));
    if (MatroskaExtReader::Failed(reader.Init())) return nullptr;
    const char* condition = nullptr;
    for (const auto& tracks : reader.Segment.Tracks) {
        for (const auto& entry : tracks->Entries) {
            const char* mime = android::GetMimeType(entry->FourCC);
            const bool isVorbis = entry->TrackType.Get() == MatroskaExtReader::kTrackTypeAudio &&
                                  mime != nullptr &&
                                  std::strcmp(mime, android::MEDIA_MIMETYPE_AUDIO_VORBIS) == 0;
            const auto& headers = entry->CodecPrivate;
            if (isVorbis && !android::VorbisHeadersAccepted(headers.data(), headers.size(), &condition))
                return condition;
        }
    }
    return nullptr;
}

void RequireCheap(const sp<FaultySource>& source, uint64_t size, const std::string& what) {
    Require(source->Reads() <= kFreeReads + kReadsPerByte * size,
            what + " stays within its budget of reads: " + std::to_string(source->Reads()) + " for " +
                std::to_string(size) + " bytes");
    Require(source->BytesRead() <= kFreeBytes + kBytesPerByte * size,
            what + " stays within its budget of bytes: " + std::to_string(source->BytesRead()) + " for " +
                std::to_string(size) + " bytes");
}

Opened Open(const Bytes& file, const Faults& faults) {
    const char* const assertion = ExpectedAssertion(file, faults);
    const ScopedLeaks leaks(assertion != nullptr);
    Opened opened;
    opened.source = new FaultySource(file, faults);
    RequireAssertion(Catch([&] { opened.extractor = android::createInstance(opened.source, nullptr); }),
                     assertion);
    RequireCheap(opened.source, file.size(), "opening");
    return opened;
}

// ---- units

// What two runs are compared by. RealMedia audio has addresses in its bytes, which differ from run to run.
struct Unit {
    int64_t timeUs = 0;
    int32_t sync = 0;
    std::string bytes;

    bool operator==(const Unit& other) const {
        return timeUs == other.timeUs && sync == other.sync && bytes == other.bytes;
    }
};

bool HoldsAddresses(const sp<MetaData>& format) {
    const char* mime = nullptr;
    return format->findCString(android::kKeyMIMEType, &mime) && std::strstr(mime, "real") != nullptr;
}

bool IsSubtitle(const sp<MetaData>& format) {
    const char* mime = nullptr;
    return format->findCString(android::kKeyMIMEType, &mime) && std::strncmp(mime, "text/", 5) == 0;
}

Unit TakeUnit(MediaBuffer* buffer, bool hidesBytes) {
    Unit unit;
    Require(buffer->range_offset() <= buffer->size() &&
                buffer->range_length() <= buffer->size() - buffer->range_offset(),
            "a unit's range lies within its buffer");
    Require(buffer->meta_data()->findInt64(android::kKeyTime, &unit.timeUs), "a unit has a time");
    Require(buffer->meta_data()->findInt32(android::kKeyIsSyncFrame, &unit.sync),
            "a unit says whether it is a sync");
    const char* bytes = static_cast<const char*>(buffer->data()) + buffer->range_offset();
    if (hidesBytes) {
        unit.bytes = std::to_string(buffer->range_length());
    } else {
        unit.bytes.assign(bytes, buffer->range_length());
    }
    buffer->release();
    return unit;
}

// One read with all that it promises.
status_t ReadUnit(const sp<MediaSource>& source, const MediaSource::ReadOptions* options, Unit* unit) {
    const sp<MetaData> format = source->getFormat();
    MediaBuffer* buffer = reinterpret_cast<MediaBuffer*>(1);
    const status_t status = source->read(&buffer, options);
    if (status == android::OK) {
        Require(buffer != nullptr, "a good read gives a buffer");
        *unit = TakeUnit(buffer, HoldsAddresses(format));
    } else {
        Require(buffer == nullptr, "a read that failed gives no buffer");
        Require(status == android::ERROR_END_OF_STREAM ||
                    (status == android::NOT_ENOUGH_DATA && IsSubtitle(format)),
                "reads answer OK, end of stream, or for subtitles not enough data");
    }
    return status;
}

std::vector<Unit> ReadToEnd(const sp<MediaSource>& source) {
    std::vector<Unit> units;
    size_t bytes = 0;
    source->start(nullptr);
    for (Unit unit; units.size() < kMostUnits && bytes < kMostBytes;) {
        if (ReadUnit(source, nullptr, &unit) != android::OK) break;
        bytes += unit.bytes.size();
        units.push_back(std::move(unit));
    }
    return units;
}

size_t CountDriven(const sp<MediaExtractor>& extractor) {
    return std::min(extractor->countTracks(), kMostTracks);
}

// Each track by itself.
std::vector<std::vector<Unit>> ReadTracks(const sp<MediaExtractor>& extractor) {
    std::vector<std::vector<Unit>> all;
    for (size_t i = 0; i < CountDriven(extractor); ++i) all.push_back(ReadToEnd(extractor->getTrack(i)));
    return all;
}

// ---- a script's operations, and what came of them as text

class Session {
  public:
    explicit Session(const Opened& opened) : mExtractor(opened.extractor) {
        mCount = CountDriven(mExtractor);
        for (size_t i = 0; i < mCount; ++i) {
            mFormats.push_back(mExtractor->getTrackMetaData(i, 0));
            mSources.push_back(mExtractor->getTrack(i));
            Require(mSources.back() != nullptr && mFormats.back() != nullptr,
                    "each track has a source and a format");
            mSources.back()->start(nullptr);
        }
        Require(mExtractor->getTrack(mExtractor->countTracks()) == nullptr,
                "there is no track behind the last");
        Require(mExtractor->getTrackMetaData(mExtractor->countTracks(), 0) == nullptr,
                "there is no format behind the last");
        mText = testing_support::ListTracks(mExtractor);
    }

    void Run(const Script& script) {
        for (const Operation& operation : script.operations) {
            if (mCount == 0) break;
            Run(operation, operation.track % mCount);
        }
        for (size_t i = 0; i < mCount; ++i) {
            for (const Unit& unit : ReadToEnd(mSources[i])) Note(i, android::OK, unit);
            mSources[i]->stop();
        }
    }
    const std::string& Text() const { return mText; }

  private:
    void Run(const Operation& operation, size_t track) {
        const uint8_t argument = operation.argument;
        MediaSource::ReadOptions options;
        switch (operation.what) {
            case Do::kNothing:
            case Do::kCount:
                break;
            case Do::kRead:
                for (int i = 0; i <= (argument & 15); ++i) Read(track, nullptr);
                break;
            case Do::kSeek:
                options.setSeekTo(Target(track, argument), Mode(argument));
                Read(track, &options);
                break;
            case Do::kSeekExtreme:
                options.setSeekTo(Extreme(track, argument), Mode(argument));
                Read(track, &options);
                break;
            case Do::kLate:
                options.setLateBy(argument * int64_t{50000});
                Read(track, &options);
                break;
            case Do::kLateExtreme:
                options.setLateBy(Extreme(track, argument));
                Read(track, &options);
                break;
            case Do::kSeekAndLate:
                options.setSeekTo(Target(track, argument), Mode(argument));
                options.setLateBy(argument * int64_t{50000});
                Read(track, &options);
                break;
            case Do::kStop:
                mSources[track]->stop();
                break;
            case Do::kStart:
                mSources[track]->start(nullptr);
                break;
            case Do::kAskFormat:
                Require(mSources[track]->getFormat() == mFormats[track], "a source's format is its track's");
                break;
            case Do::kReplace:
            case Do::kReplaceIdle:
                Replace(track, operation.what == Do::kReplace);
                break;
            case Do::kForget:
                mExtractor.clear();
                break;
            case Do::kDescribe:
                if (mExtractor != nullptr)
                    mText += testing_support::Describe(mExtractor->getTrackMetaData(track, 1));
                break;
            case Do::kInspect:
                Inspect(track);
                break;
        }
    }

    void Inspect(size_t track) {
        if (mExtractor == nullptr) return;
        const auto* own = static_cast<const android::MatroskaExtExtractor*>(mExtractor.get());
        android::MatroskaExtIterator iterator(own->File(), 0, 0, own->Tracks()[track].mTrackNum, nullptr);
        mText += "thumbnail " + std::to_string(iterator.findThumbnailTimeUs());
        int a, b, c;
        iterator.getAC3Info(a, b, c);
        mText += " a52 " + std::to_string(a) + ' ' + std::to_string(b) + ' ' + std::to_string(c);
        iterator.getDTSInfo(a, b, c);
        Require(a == 0 && b == 0 && c == 0, "nothing is said of DTS");
        mText += " mpeg4 " + std::to_string(iterator.getMpeg4Headers().size()) + '\n';
    }

    void Replace(size_t track, bool starts) {
        if (mExtractor == nullptr) return;
        mSources[track].clear();
        mSources[track] = mExtractor->getTrack(track);
        if (starts) mSources[track]->start(nullptr);
    }

    void Read(size_t track, const MediaSource::ReadOptions* options) {
        Unit unit;
        const status_t status = ReadUnit(mSources[track], options, &unit);
        Note(track, status, unit);
    }

    void Note(size_t track, status_t status, const Unit& unit) {
        mText += std::to_string(track) + ' ' + std::to_string(status);
        if (status == android::OK) {
            mText += ' ' + std::to_string(unit.timeUs) + ' ' + std::to_string(unit.sync) + ' ';
            mText += std::to_string(std::hash<std::string>()(unit.bytes));
        }
        mText += '\n';
    }

    static MediaSource::ReadOptions::SeekMode Mode(uint8_t argument) {
        return static_cast<MediaSource::ReadOptions::SeekMode>(argument & 3);
    }
    int64_t DurationUs(size_t track) const {
        int64_t duration = 0;
        mFormats[track]->findInt64(android::kKeyDuration, &duration);
        return duration;
    }
    int64_t Target(size_t track, uint8_t argument) const { return DurationUs(track) / 255 * argument; }
    int64_t Extreme(size_t track, uint8_t argument) const {
        const int64_t duration = DurationUs(track);
        const int64_t targets[] = {0,      1,      -1,       INT64_MIN,    INT64_MAX, INT64_MAX - 100000,
                                   400000, 400001, duration, INT64_MIN + 1};
        return targets[argument % (sizeof(targets) / sizeof(targets[0]))];
    }

    sp<MediaExtractor> mExtractor;
    size_t mCount = 0;
    std::vector<sp<MetaData>> mFormats;
    std::vector<sp<MediaSource>> mSources;
    std::string mText;
};

std::string RunScript(const Bytes& file, const Faults& faults, const Script& script) {
    const Opened opened = Open(file, faults);
    if (opened.extractor == nullptr) return "assertion";
    Session session(opened);
    session.Run(script);
    return session.Text();
}

// ---- promises that compare runs

void CheckSniffing(const Bytes& file, const Faults& faults, bool isFaultless) {
    const sp<FaultySource> source = new FaultySource(file, faults);
    android::String8 mime("untouched");
    float confidence = -1;
    const bool isClaimed = android::Sniffer(source, &mime, &confidence, nullptr);
    RequireCheap(source, file.size(), "sniffing");
    static const uint8_t kMagic[] = {0x1A, 0x45, 0xDF, 0xA3};
    if (isFaultless) {
        Require(isClaimed == (file.size() >= 4 && std::memcmp(file.data(), kMagic, 4) == 0),
                "a file is claimed by its first four bytes");
    }
    Require(isClaimed ? confidence == 0.5f || confidence == 0.91f : confidence == -1,
            "the confidence has one of two values, and is left alone where nothing is claimed");
    RequireEqual(isClaimed ? "video/x-matroska_ext" : "untouched", mime.string(), "the sniffed type");
}

// What a file's head says of its tracks: two openings that agree in it deliver from the same description.
std::string TrackFacts(const Bytes& file, const Faults& faults) {
    MatroskaExtReader::CMatroskaFile reader(new FaultySource(file, faults));
    if (MatroskaExtReader::Failed(reader.Init())) return "unreadable";
    std::string text =
        std::to_string(reader.Segment.DataStart) + ' ' + std::to_string(reader.MasterTrack()) + '\n';
    for (const auto& tracks : reader.Segment.Tracks) {
        for (const auto& entry : tracks->Entries) {
            text += std::to_string(entry->TrackNumber.Get()) + ' ' + std::to_string(entry->TrackType.Get()) +
                    ' ' + std::to_string(entry->FourCC) + ' ' + std::to_string(entry->CodecPrivate.size());
            for (const auto& encoding : entry->Encodings) {
                const auto& settings = encoding->Compression.ContentCompSettings;
                text += ' ' + std::to_string(encoding->ContentEncodingOrder.Get()) + '/' +
                        std::to_string(encoding->ContentEncodingScope.Get()) + '/' +
                        std::to_string(encoding->ContentEncodingType.Get()) + '/' +
                        std::to_string(encoding->Compression.ContentCompAlgo.Get()) + '/' +
                        testing_support::ToHex(settings.data(), settings.size());
            }
            text += '\n';
        }
    }
    return text;
}

bool IsPrefix(const std::vector<Unit>& part, const std::vector<Unit>& whole) {
    return part.size() <= whole.size() &&
           std::equal(part.begin(), part.end(), whole.begin(),
                      [](const Unit& a, const Unit& b) { return a.bytes == b.bytes; });
}

// A source that fails from an offset on gives the first of the units that the whole one gives. Only the bytes
// are compared: a Timecode, or a reference, may stand behind the block whose time or sync flag it decides.
void CheckCutFile(const Bytes& file, const Faults& faults, uint32_t offset) {
    Faults cut = faults;
    cut.errorFromOffset = offset % (file.size() + 1);
    if (TrackFacts(file, faults) != TrackFacts(file, cut)) return;
    const Opened whole = Open(file, faults), part = Open(file, cut);
    if (whole.extractor == nullptr || part.extractor == nullptr) return;
    if (whole.extractor->countTracks() != part.extractor->countTracks())
        return;  // inspected frames were cut off
    const auto allUnits = ReadTracks(whole.extractor), firstUnits = ReadTracks(part.extractor);
    for (size_t i = 0; i < firstUnits.size(); ++i) {
        // An event takes the text of the one before it along, as long as the reading has come.
        if (IsSubtitle(whole.extractor->getTrackMetaData(i, 0))) continue;
        Require(IsPrefix(firstUnits[i], allUnits[i]),
                "the units of a file cut at " + std::to_string(cut.errorFromOffset) +
                    " are the first of the whole file's, track " + std::to_string(i));
    }
}

// One thread a track delivers what the tracks deliver one after the other. Subtitles are as far as the
// reading of the master track has come, so they are left out.
void CheckThreads(const Bytes& file, const Faults& faults) {
    const Opened one = Open(file, faults);
    if (one.extractor == nullptr || one.extractor->countTracks() == 0) return;
    const auto expected = ReadTracks(one.extractor);
    const Opened many = Open(file, faults);
    std::vector<std::vector<Unit>> actual(expected.size());
    std::vector<std::thread> threads;
    for (size_t i = 0; i < expected.size(); ++i) {
        threads.emplace_back(
            [&actual, i, source = many.extractor->getTrack(i)] { actual[i] = ReadToEnd(source); });
    }
    for (std::thread& thread : threads) thread.join();
    for (size_t i = 0; i < expected.size(); ++i) {
        if (IsSubtitle(many.extractor->getTrackMetaData(i, 0))) continue;
        Require(expected[i] == actual[i], "threads deliver the same units, track " + std::to_string(i));
    }
}

}  // namespace

void RunPlugin(const uint8_t* data, size_t size) {
    if (size < kScriptSize) return;
    const Script script = Script::Parse(data);
    const Bytes file(data + kScriptSize, data + size);
    const Faults faults = script.FaultsFor(file.size());
    const android::host::ScopedAllocationLimit memory(script.Has(kScarceMemory) ? script.offset & 0xFFFF
                                                                                : SIZE_MAX);

    const bool isFaultless = script.errorAt == 0 && script.pattern == 0 && !script.Has(kFailsAtOffset);
    CheckSniffing(file, faults, isFaultless);
    const std::string text = RunScript(file, faults, script);
    if (script.Has(kTwice))
        RequireEqual(text, RunScript(file, faults, script), "the same input gives the same");
    if (!script.IsIndependentOfCalls()) return;
    if (script.Has(kCutShort) && !script.Has(kFailsAtOffset)) CheckCutFile(file, faults, script.offset);
    if (script.Has(kThreads)) CheckThreads(file, faults);
}

}  // namespace fuzz
