// The result model: what mkvx knows about a file, as plain values. Commands fill it through Session and the
// renderers print it; neither side knows the other.
//
// Times and durations are microseconds, as the plug-in's MetaData holds them; sizes are bytes. A value that
// the plug-in did not set is absent (nullopt or an empty list), never 0 in its place. Texts are the bytes
// found in the file and need not be valid UTF-8. Plain values: copy freely, no thread rules.
#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace mkvx {

enum class TrackKind { kVideo, kAudio, kSubtitle };

// "video", "audio" or "subtitle".
const char* toString(TrackKind kind);

// One codec configuration record of a track's MetaData, named by its key's four characters.
struct ConfigRecord {
    std::string key;
    std::vector<uint8_t> bytes;
};

// One track that the plug-in offers.
struct TrackInfo {
    size_t index = 0;     // the framework's track index
    uint32_t number = 0;  // Matroska TrackNumber
    TrackKind kind = TrackKind::kVideo;
    std::string mime;
    std::optional<int32_t> width, height;  // pixels
    std::optional<int32_t> sampleRate;     // Hz
    std::optional<int32_t> channels;
    std::optional<std::string> language;
    std::optional<int64_t> durationUs;
    std::optional<int32_t> bitRate;  // bits per second
    std::optional<int64_t> thumbnailUs;
    std::vector<ConfigRecord> config;
};

struct FileInfo {
    std::string path;
    std::string containerMime;
    std::vector<TrackInfo> tracks;  // in index order
};

// One access unit or subtitle event as it was delivered: the bytes of the buffer's range.
struct Unit {
    size_t track = 0;     // TrackInfo::index
    uint32_t number = 0;  // TrackInfo::number
    int64_t timeUs = 0;
    bool sync = false;
    size_t size = 0;
    std::string sha1;              // 40 lower-case hex digits
    std::optional<int64_t> endUs;  // subtitles only
};

// What the sniffer said about one file.
struct SniffResult {
    std::string path;
    bool claimed = false;
    std::string mime;  // empty when not claimed
    float confidence = 0;
};

}  // namespace mkvx
