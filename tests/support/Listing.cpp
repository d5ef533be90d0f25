#include "support/Listing.h"

#include <zlib.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <sstream>

#include "support/LogCapture.h"

namespace testing_support {

using android::MediaBuffer;
using android::MediaSource;
using android::MetaData;
using android::sp;
using android::status_t;

namespace {

constexpr uint32_t kKeySubtitleEnd = 0x73756245;  // 'subE'
constexpr size_t kLongestShownData = 128;

std::string Crc(const void* data, size_t size) {
    char text[16];
    const uLong crc = crc32(0, static_cast<const Bytef*>(data), static_cast<uInt>(size));
    std::snprintf(text, sizeof text, "%08lx", static_cast<unsigned long>(crc));
    return text;
}

// The class tells nobody its keys, but it logs them: each line begins with the FourCC.
std::vector<uint32_t> KeysOf(const sp<MetaData>& meta) {
    LogCapture log;
    meta->dumpToLog();
    std::vector<uint32_t> keys;
    for (const LogRecord& record : log.Records()) {
        if (record.text.size() < 4) continue;
        uint32_t key = 0;
        for (int i = 0; i < 4; ++i)
            key = key << 8 | static_cast<uint8_t>(record.text[static_cast<size_t>(i)]);
        keys.push_back(key);
    }
    std::sort(keys.begin(), keys.end());
    return keys;
}

std::string DescribeData(const sp<MetaData>& meta, uint32_t key) {
    uint32_t type = 0;
    const void* data = nullptr;
    size_t size = 0;
    if (!meta->findData(key, &type, &data, &size)) return "?";
    if (size <= kLongestShownData) return "[" + ToHex(static_cast<const uint8_t*>(data), size) + "]";
    return "[" + std::to_string(size) + " bytes, crc " + Crc(data, size) + "]";
}

std::string DescribeValue(const sp<MetaData>& meta, uint32_t key) {
    const char* text = nullptr;
    int32_t small = 0;
    int64_t large = 0;
    if (meta->findCString(key, &text)) return text;
    if (meta->findInt32(key, &small)) return std::to_string(small);
    if (meta->findInt64(key, &large)) return std::to_string(large);
    return DescribeData(meta, key);
}

bool IsSubtitle(const sp<MetaData>& meta) {
    const char* mime = nullptr;
    return meta->findCString(android::kKeyMIMEType, &mime) && std::strncmp(mime, "text/", 5) == 0;
}

std::string UnitLine(size_t track, const Unit& unit) {
    std::ostringstream line;
    line << track << ' ' << unit << '\n';
    return line.str();
}

std::string ListTrackUnits(const sp<MediaSource>& source, size_t track, size_t retries) {
    std::string text;
    source->start(nullptr);
    for (;;) {
        Unit unit;
        const status_t status = ReadUnit(source, &unit);
        text += status == android::OK ? UnitLine(track, unit)
                                      : std::to_string(track) + " end " + std::to_string(status) + "\n";
        if (status != android::OK && retries-- == 0) break;
    }
    source->stop();
    return text;
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const Unit& unit) {
    out << "time=" << unit.timeUs << " sync=" << unit.sync << " size=" << unit.bytes.size()
        << " crc=" << Crc(unit.bytes.data(), unit.bytes.size());
    if (unit.endUs >= 0) out << " end=" << unit.endUs;
    return out;
}

std::string KeyName(uint32_t key) {
    std::string name;
    for (int shift = 24; shift >= 0; shift -= 8) name += static_cast<char>(key >> shift);
    return name;
}

std::string Describe(const sp<MetaData>& meta) {
    std::string text;
    for (uint32_t key : KeysOf(meta)) {
        if (!text.empty()) text += ' ';
        text += KeyName(key) + "=" + DescribeValue(meta, key);
    }
    return text;
}

status_t ReadUnit(const sp<MediaSource>& source, Unit* unit, const MediaSource::ReadOptions* options) {
    MediaBuffer* buffer = nullptr;
    const status_t status = source->read(&buffer, options);
    if (status != android::OK) return status;
    const auto* data = static_cast<const uint8_t*>(buffer->data()) + buffer->range_offset();
    unit->bytes.assign(data, data + buffer->range_length());
    const sp<MetaData> meta = buffer->meta_data();
    meta->findInt64(android::kKeyTime, &unit->timeUs);
    meta->findInt32(android::kKeyIsSyncFrame, &unit->sync);
    meta->findInt64(kKeySubtitleEnd, &unit->endUs);
    buffer->release();
    return status;
}

std::vector<Unit> ReadAll(const sp<MediaSource>& source, status_t* end, size_t limit) {
    std::vector<Unit> units;
    while (units.size() < limit) {
        Unit unit;
        const status_t status = ReadUnit(source, &unit);
        if (end != nullptr) *end = status;
        if (status != android::OK) break;
        units.push_back(std::move(unit));
    }
    return units;
}

std::string ListTracks(const sp<android::MediaExtractor>& extractor) {
    std::string text = "file " + Describe(extractor->getMetaData()) + "\n";
    for (size_t i = 0; i < extractor->countTracks(); ++i) {
        text += "track " + std::to_string(i) + " " + Describe(extractor->getTrackMetaData(i, 1)) + "\n";
    }
    return text;
}

std::vector<Unit> ReadSubtitles(const sp<android::MediaExtractor>& extractor, size_t master,
                                size_t subtitle) {
    std::vector<Unit> subtitles;
    const sp<MediaSource> driver = extractor->getTrack(master);
    const sp<MediaSource> source = extractor->getTrack(subtitle);
    driver->start(nullptr);
    source->start(nullptr);
    for (bool more = true; more;) {
        Unit ignored;
        more = ReadUnit(driver, &ignored) == android::OK;
        for (Unit unit; ReadUnit(source, &unit) == android::OK; unit = Unit()) subtitles.push_back(unit);
    }
    source->stop();
    driver->stop();
    return subtitles;
}

std::string ListUnits(const MakeExtractor& make, size_t master, size_t retries) {
    std::string text;
    const sp<android::MediaExtractor> extractor = make();
    for (size_t i = 0; i < extractor->countTracks(); ++i) {
        if (!IsSubtitle(extractor->getTrackMetaData(i, 0))) {
            text += ListTrackUnits(extractor->getTrack(i), i, retries);
            continue;
        }
        for (const Unit& unit : ReadSubtitles(make(), master, i)) text += UnitLine(i, unit);
    }
    return text;
}

}  // namespace testing_support
