// What a file says of its tracks that the framework is not told: flags, frame rate, the size and colours that
// a picture is meant to be shown with, and the bit rates of statistics that a muxer left. Read from the
// elements themselves, header by header.
//
// Where an element is missing its default of RFC 9559 counts, if it has one. Plain values: copy freely.
#pragma once
#include <media/stagefright/DataSource.h>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace mkvx {

// RFC 9559, section 5.1.4.1.28.14.
enum class DisplayUnit : uint64_t {
    kPixels = 0,
    kCentimetres = 1,
    kInches = 2,
    kAspectRatio = 3,
    kUnknown = 4
};

struct DisplaySize {
    uint64_t width = 0, height = 0;
    DisplayUnit unit = DisplayUnit::kPixels;

    // "1024x576", "16:9", "20x11 cm", "8x5 in".
    std::string text() const;
};

// Code points of ISO/IEC 23091-2 as the Colour element has them; 2: not specified.
struct Colour {
    static constexpr uint64_t kUnspecified = 2;

    uint64_t primaries = kUnspecified, transfer = kUnspecified, matrix = kUnspecified;
    uint64_t range = 0;  // 0: not specified, 1: limited, 2: full, 3: follows from matrix and transfer

    // "BT.709, limited range"; where the three differ "BT.2020, PQ, matrix BT.2020"; empty for nothing
    // specified.
    std::string text() const;
};

struct DeclaredTrack {
    uint64_t number = 0;  // TrackNumber
    uint64_t uid = 0;     // TrackUID
    bool isDefault = true, isForced = false;
    uint64_t frameNs = 0;  // DefaultDuration, nanoseconds; 0: none
    uint64_t pixelWidth = 0, pixelHeight = 0;
    std::optional<DisplaySize> display;  // of video with a size
    std::optional<Colour> colour;
    // Bits per second, by the tag BPS of statistics that name this file's writing application and date.
    std::optional<uint64_t> statisticsBitRate;

    std::optional<double> frameRate() const;  // frames a second, by frameNs
};

// In the order of the file. Looks at what stands in front of the first Cluster, and at the Tracks and Tags
// that a SeekHead there leads to. Reads no more of Tags than their headers, names and short values; keeps
// nothing but tracks.
std::vector<DeclaredTrack> readDeclaredTracks(const android::sp<android::DataSource>& source);

}  // namespace mkvx
