#include "device/Declared.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <algorithm>
#include <charconv>
#include <ctime>
#include <map>

#include "base/Log.h"
#include "device/ElementWalk.h"

namespace mkvx {
namespace {

// Those that only this file asks for.
constexpr uint32_t kFlagForced = 0x55AA, kColour = 0x55B0, kMatrix = 0x55B1, kRange = 0x55B9,
                   kTransfer = 0x55BA, kPrimaries = 0x55BB;
constexpr uint32_t kPixelCropBottom = 0x54AA, kPixelCropTop = 0x54BB, kPixelCropLeft = 0x54CC,
                   kPixelCropRight = 0x54DD;
constexpr uint32_t kTag = 0x7373, kTagTrackUid = 0x63C5, kSimpleTag = 0x67C8, kTagName = 0x45A3,
                   kTagString = 0x4487;

constexpr size_t kMostJumps = 16;    // places that SeekHeads lead to
constexpr size_t kMostTargets = 64;  // tracks that one Tag is about

struct Name {
    uint64_t value;
    const char* text;
};

// ISO/IEC 23091-2, tables 2 to 4.
constexpr Name kPrimariesNames[] = {
    {1, "BT.709"},  {4, "BT.470 M"}, {5, "BT.470 BG"}, {6, "SMPTE 170M"},  {7, "SMPTE 240M"},  {8, "film"},
    {9, "BT.2020"}, {10, "XYZ"},     {11, "DCI-P3"},   {12, "Display P3"}, {22, "EBU 3213-E"},
};
constexpr Name kTransferNames[] = {
    {1, "BT.709"},     {4, "gamma 2.2"}, {5, "gamma 2.8"},  {6, "SMPTE 170M"},
    {7, "SMPTE 240M"}, {8, "linear"},    {9, "log 100:1"},  {10, "log 316:1"},
    {11, "xvYCC"},     {12, "BT.1361"},  {13, "sRGB"},      {14, "BT.2020"},
    {15, "BT.2020"},   {16, "PQ"},       {17, "SMPTE 428"}, {18, "HLG"},
};
constexpr Name kMatrixNames[] = {
    {0, "RGB"},       {1, "BT.709"},     {4, "FCC"},
    {5, "BT.470 BG"}, {6, "SMPTE 170M"}, {7, "SMPTE 240M"},
    {8, "YCgCo"},     {9, "BT.2020"},    {10, "BT.2020 constant luminance"},
};

template <size_t N>
std::string nameOf(uint64_t value, const Name (&names)[N]) {
    if (value == Colour::kUnspecified) return {};
    for (const Name& name : names)
        if (name.value == value) return name.text;
    return fmt::format("code {}", value);
}

uint64_t numberOf(const Element& element) {
    const auto* value = std::get_if<uint64_t>(&element.value);
    return value != nullptr ? *value : 0;
}

std::string textOf(const Element& element) {
    const auto* value = std::get_if<TextValue>(&element.value);
    return value != nullptr ? value->head : std::string();
}

// A Tag, as far as a track's bit rate is concerned.
struct TrackTag {
    std::vector<uint64_t> uids;
    std::string name;             // of the SimpleTag that the walk is in
    std::string writtenBy, date;  // of the file that the statistics are of
    std::optional<uint64_t> bitRate;
};

// As statistics write it.
std::string dateText(const DateValue& date) {
    constexpr int64_t kStartOf2001 = 978307200;
    const std::time_t seconds = kStartOf2001 + date.ns / 1000000000;
    std::tm parts{};
    char text[32] = "";
    if (gmtime_r(&seconds, &parts) != nullptr) std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts);
    return text;
}

// A TrackEntry whose display size waits for all that it follows from.
struct Entry {
    DeclaredTrack track;
    std::optional<uint64_t> displayWidth, displayHeight;
    uint64_t displayUnit = 0;
    uint64_t cropX = 0, cropY = 0;
};

class DeclaredWalk {
  public:
    explicit DeclaredWalk(const android::sp<android::DataSource>& source) : mWalk(source) {}

    std::vector<DeclaredTrack> run() {
        while (!mIsOver) {  // bounded: the walk goes forward, but for kMostJumps
            const std::optional<WalkItem> item = mWalk.next();
            if (!item) break;
            if (const auto* element = std::get_if<Element>(&item->what)) take(item->depth, *element);
        }
        endTag();
        std::vector<DeclaredTrack> tracks;
        for (const Entry& entry : mEntries) tracks.push_back(finished(entry));
        return tracks;
    }

  private:
    void take(unsigned depth, Element element) {
        if (depth < 3) endTag();
        if (depth == 0 && element.id != id::kSegment) return mWalk.skipChildren();
        if (depth == 1) return takeOfSegment(element);
        if (depth == 2 && element.id == kTag) mTag = TrackTag();
        if (depth == 2 && element.id == id::kTrackEntry) beginEntry();
        if (depth < 2) return;
        mWalk.readValue(element);
        if (depth == 2 && element.id == id::kWritingApp) mWrittenBy = textOf(element);
        if (depth == 2 && element.id == id::kDateUtc)
            if (const auto* date = std::get_if<DateValue>(&element.value)) mDate = dateText(*date);
        if (depth == 3 && element.id == id::kSeekId) mSoughtId = idOf(element);
        if (depth == 3 && element.id == id::kSeekPosition) noteSeek(numberOf(element));
        if (mTag) return takeOfTag(depth, element);
        if (!mEntries.empty()) takeOfEntry(depth, element, mEntries.back());
    }

    void takeOfSegment(const Element& element) {
        const bool isSought = element.id == id::kTracks || element.id == id::kTags;
        if (element.id == id::kCluster || (mJumps > 0 && !isSought)) return jumpOn();
        if (element.id != id::kSeekHead && element.id != id::kInfo && !isSought) mWalk.skipChildren();
    }

    // To the next place that a SeekHead has told.
    void jumpOn() {
        mWalk.skipChildren();
        auto next = mPlaces.begin();
        // Tracks that were there already are not read twice; for Tags that makes no difference.
        while (next != mPlaces.end() && next->second == id::kTracks && !mEntries.empty()) ++next;
        mIsOver = next == mPlaces.end() || ++mJumps > kMostJumps;
        if (mIsOver) return;
        mWalk.jumpTo(next->first);
        mPlaces.erase(mPlaces.begin(), std::next(next));
    }

    static uint32_t idOf(const Element& element) {
        const auto* value = std::get_if<IdValue>(&element.value);
        return value != nullptr ? value->id : 0;
    }

    void noteSeek(uint64_t position) {
        const uint64_t start = mWalk.context().segmentData;
        const bool isSought = mSoughtId == id::kTags || mSoughtId == id::kTracks;
        if (isSought && position < mWalk.end() - start && mPlaces.size() < kMostJumps)
            mPlaces[start + position] = mSoughtId;
    }

    void beginEntry() {
        if (mEntries.size() < ElementWalk::kMostTracks)
            mEntries.emplace_back();
        else
            mWalk.skipChildren();
    }

    static void takeOfEntry(unsigned depth, const Element& element, Entry& entry) {
        const uint64_t number = numberOf(element);
        DeclaredTrack& track = entry.track;
        if (depth == 3 && element.id == id::kTrackNumber) track.number = number;
        if (depth == 3 && element.id == id::kTrackUid) track.uid = number;
        if (depth == 3 && element.id == id::kFlagDefault) track.isDefault = number != 0;
        if (depth == 3 && element.id == kFlagForced) track.isForced = number != 0;
        if (depth == 3 && element.id == id::kDefaultDuration) track.frameNs = number;
        if (depth == 4) takeOfVideo(element.id, number, entry);
        if (depth == 5) takeOfColour(element.id, number, track.colour);
    }

    static void takeOfVideo(uint32_t id, uint64_t number, Entry& entry) {
        if (id == id::kPixelWidth) entry.track.pixelWidth = number;
        if (id == id::kPixelHeight) entry.track.pixelHeight = number;
        if (id == id::kDisplayWidth) entry.displayWidth = number;
        if (id == id::kDisplayHeight) entry.displayHeight = number;
        if (id == id::kDisplayUnit) entry.displayUnit = number;
        if (id == kPixelCropLeft || id == kPixelCropRight) entry.cropX += number;
        if (id == kPixelCropTop || id == kPixelCropBottom) entry.cropY += number;
        if (id == kColour) entry.track.colour = Colour();
    }

    static void takeOfColour(uint32_t id, uint64_t number, std::optional<Colour>& colour) {
        if (!colour) return;
        if (id == kMatrix) colour->matrix = number;
        if (id == kTransfer) colour->transfer = number;
        if (id == kPrimaries) colour->primaries = number;
        if (id == kRange) colour->range = number;
    }

    void takeOfTag(unsigned depth, const Element& element) {
        if (depth == 3 && element.id == kSimpleTag) mTag->name.clear();
        if (depth != 4) return;
        if (element.id == kTagTrackUid && mTag->uids.size() < kMostTargets)
            mTag->uids.push_back(numberOf(element));
        if (element.id == kTagName) mTag->name = textOf(element);
        if (element.id != kTagString) return;
        if (isNamed("BPS")) mTag->bitRate = digitsOf(textOf(element));
        if (isNamed("_STATISTICS_WRITING_APP")) mTag->writtenBy = textOf(element);
        if (isNamed("_STATISTICS_WRITING_DATE_UTC")) mTag->date = textOf(element);
    }

    // Some muxers add a language to it.
    bool isNamed(const std::string& name) const {
        return mTag->name == name || mTag->name.compare(0, name.size() + 1, name + "-") == 0;
    }

    static std::optional<uint64_t> digitsOf(const std::string& text) {
        uint64_t value = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        const bool isWhole = error == std::errc() && end == text.data() + text.size();
        return isWhole && value > 0 ? std::optional<uint64_t>(value) : std::nullopt;
    }

    void endTag() {
        if (!mTag) return;
        // A muxer that copies tags leaves those of an earlier file, whose tracks had other rates.
        const bool isOfThisFile = mTag->writtenBy == mWrittenBy && mTag->date == mDate && !mDate.empty();
        for (Entry& entry : mEntries)
            for (const uint64_t uid : mTag->uids)
                if (isOfThisFile && uid == entry.track.uid && mTag->bitRate)
                    entry.track.statisticsBitRate = mTag->bitRate;
        mTag.reset();
    }

    static DeclaredTrack finished(const Entry& entry) {
        DeclaredTrack track = entry.track;
        if (track.pixelWidth == 0 || track.pixelHeight == 0) return track;
        const auto isKnown = entry.displayUnit < uint64_t(DisplayUnit::kUnknown);
        DisplaySize size;
        size.unit = isKnown ? DisplayUnit(entry.displayUnit) : DisplayUnit::kUnknown;
        // Only a size in pixels has a default.
        const bool isPixels = size.unit == DisplayUnit::kPixels;
        size.width = entry.displayWidth.value_or(
            isPixels ? track.pixelWidth - std::min(entry.cropX, track.pixelWidth) : 0);
        size.height = entry.displayHeight.value_or(
            isPixels ? track.pixelHeight - std::min(entry.cropY, track.pixelHeight) : 0);
        if (size.width > 0 && size.height > 0) track.display = size;
        return track;
    }

    ElementWalk mWalk;
    std::vector<Entry> mEntries;
    std::optional<TrackTag> mTag;
    std::string mWrittenBy, mDate;         // by its Info
    uint32_t mSoughtId = 0;                // of the Seek that the walk is in
    std::map<uint64_t, uint32_t> mPlaces;  // where SeekHeads say that Tracks and Tags stand, and which
    size_t mJumps = 0;
    bool mIsOver = false;
};

}  // namespace

std::string DisplaySize::text() const {
    switch (unit) {
        case DisplayUnit::kAspectRatio:
            return fmt::format("{}:{}", width, height);
        case DisplayUnit::kCentimetres:
            return fmt::format("{}x{} cm", width, height);
        case DisplayUnit::kInches:
            return fmt::format("{}x{} in", width, height);
        case DisplayUnit::kPixels:
        case DisplayUnit::kUnknown:
            break;
    }
    return fmt::format("{}x{}", width, height);
}

std::string Colour::text() const {
    static const char* const kRanges[] = {"", "limited range", "full range", "range by its matrix"};
    std::vector<std::string> parts;
    const std::string gamut = nameOf(primaries, kPrimariesNames), curve = nameOf(transfer, kTransferNames),
                      coding = nameOf(matrix, kMatrixNames);
    if (!gamut.empty()) parts.push_back(gamut);
    if (!curve.empty() && curve != gamut) parts.push_back(gamut.empty() ? "transfer " + curve : curve);
    if (!coding.empty() && coding != gamut) parts.push_back("matrix " + coding);
    if (range > 0 && range < std::size(kRanges)) parts.emplace_back(kRanges[range]);
    return fmt::format("{}", fmt::join(parts, ", "));
}

std::optional<double> DeclaredTrack::frameRate() const {
    return frameNs > 0 ? std::optional<double>(1e9 / double(frameNs)) : std::nullopt;
}

std::vector<DeclaredTrack> readDeclaredTracks(const android::sp<android::DataSource>& source) {
    MuteLog mute;
    return DeclaredWalk(source).run();
}

}  // namespace mkvx
