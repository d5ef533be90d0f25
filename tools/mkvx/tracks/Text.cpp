#include "tracks/Model.h"

#include <fmt/format.h>
#include <algorithm>

#include "base/Text.h"

namespace mkvx {
namespace {

using Align = TextTable::Align;

// ---- the container and its tracks

std::string formatColumn(const TrackInfo& track) {
    if (track.width && track.height) return fmt::format("{}x{}", *track.width, *track.height);
    if (track.sampleRate && track.channels)
        return fmt::format("{} Hz, {} ch", *track.sampleRate, *track.channels);
    return {};
}

std::string configColumn(const TrackInfo& track) {
    std::string text;
    for (const ConfigRecord& record : track.config)
        text += fmt::format("{}{} {} B", text.empty() ? "" : ", ", record.key, record.bytes.size());
    return text;
}

std::string rateColumn(const TrackInfo& track) {
    return track.bitRate ? fmt::format("{:.1f}", *track.bitRate / 1000.0) : std::string();
}

std::string timeColumn(const std::optional<int64_t>& us) {
    return us ? clockTime(*us) : std::string();
}

std::vector<std::string> rowOf(const TrackInfo& track) {
    return {std::to_string(track.index),   std::to_string(track.number),
            toString(track.kind),          printable(track.mime),
            formatColumn(track),           printable(track.language.value_or("")),
            timeColumn(track.durationUs),  rateColumn(track),
            timeColumn(track.thumbnailUs), configColumn(track)};
}

TextTable trackTable() {
    return TextTable({{"INDEX", Align::kRight},
                      {"NUMBER", Align::kRight},
                      {"TYPE"},
                      {"MIME"},
                      {"FORMAT"},
                      {"LANGUAGE"},
                      {"DURATION", Align::kRight},
                      {"KBIT/S", Align::kRight},
                      {"THUMBNAIL", Align::kRight},
                      {"CONFIGURATION"}});
}

// ---- what the file says of them

std::string flagsColumn(const DeclaredTrack& track) {
    return fmt::format("{}{}{}", track.isDefault ? "default" : "",
                       track.isDefault && track.isForced ? ", " : "", track.isForced ? "forced" : "");
}

// Only where it is not the size of the pictures.
std::string shownAsColumn(const DeclaredTrack& track) {
    if (!track.display) return {};
    const bool isPixels = track.display->unit == DisplayUnit::kPixels;
    const bool isPlain =
        isPixels && track.display->width == track.pixelWidth && track.display->height == track.pixelHeight;
    return isPlain ? std::string() : track.display->text();
}

std::string framesColumn(const DeclaredTrack& track, const TrackRate* rate) {
    if (track.frameRate()) return fmt::format("{:.3f}", *track.frameRate());
    return rate != nullptr && rate->frameRate() ? fmt::format("{:.3f} measured", *rate->frameRate()) : "";
}

std::string ownRateColumn(const DeclaredTrack& track, const TrackRate* rate) {
    if (rate != nullptr && rate->bitRate()) return fmt::format("{:.1f} measured", *rate->bitRate() / 1000);
    if (track.statisticsBitRate)
        return fmt::format("{:.1f} by its tags", double(*track.statisticsBitRate) / 1000);
    return {};
}

// The rate has a column of its own.
std::string streamColumn(StreamFacts stream) {
    stream.frameRate = 0;
    return stream.text();
}

std::vector<std::string> declaredRow(const TrackInfo& info, const StreamFacts& stream,
                                     const DeclaredTrack& track, const TrackRate* rate) {
    const bool isVideo = info.kind == TrackKind::kVideo;
    return {std::to_string(info.index),
            streamColumn(stream),
            flagsColumn(track),
            isVideo ? framesColumn(track, rate) : std::string(),
            isVideo ? shownAsColumn(track) : std::string(),
            isVideo && track.colour ? track.colour->text() : std::string(),
            ownRateColumn(track, rate)};
}

const TrackRate* rateOf(const DescribedFile& file, const TrackInfo& track) {
    if (!file.rates) return nullptr;
    const auto rate = file.rates->find(track.number);
    return rate != file.rates->end() ? &rate->second : nullptr;
}

bool lacksOwnRate(const DescribedFile& file) {
    return std::any_of(file.declared.begin(), file.declared.end(),
                       [](const auto& entry) { return !entry.second.statisticsBitRate; });
}

void printDeclared(const DescribedFile& file, std::FILE* out) {
    TextTable table({{"INDEX", Align::kRight},
                     {"STREAM"},
                     {"FLAGS"},
                     {"FRAMES/S", Align::kRight},
                     {"SHOWN AS"},
                     {"COLOUR"},
                     {"OWN KBIT/S", Align::kRight}});
    for (const TrackInfo& track : file.info.tracks) {
        const auto declared = file.declared.find(track.number);
        if (declared != file.declared.end())
            table.addRow(
                declaredRow(track, file.streams[track.index], declared->second, rateOf(file, track)));
    }
    fmt::print(out, "What the file and its streams say of them:\n{}", table.withoutEmptyColumns().str());
    if (!file.rates && lacksOwnRate(file))
        fmt::print(out, "Bit rates of their own: --rates reads the headers of all blocks for them\n");
}

void printOrigin(const DescribedFile& file, std::FILE* out) {
    if (!file.title.empty()) fmt::print(out, "Title: {}\n", printable(file.title));
    if (!file.writingApp.empty()) fmt::print(out, "Written by: {}\n", printable(file.writingApp));
    if (!file.muxingApp.empty()) fmt::print(out, "Muxer: {}\n", printable(file.muxingApp));
}

// ---- units

class UnitTable : public Listing<Unit> {
  public:
    explicit UnitTable(std::FILE* out) : Listing(out) {
        fmt::print(mOut, "{:>5} {:>13} {:>3} {:>9}  {:40}  {}\n", "INDEX", "TIME", "KEY", "SIZE", "SHA-1",
                   "END");
    }

    void write(const Unit& unit) override {
        fmt::print(mOut, "{:>5} {:>13} {:>3} {:>9}  {}", unit.track, clockTime(unit.timeUs),
                   unit.sync ? "key" : "", unit.size, unit.sha1);
        fmt::print(mOut, "{}\n", unit.endUs ? "  " + clockTime(*unit.endUs) : std::string());
    }
};

class UnitCsv : public Listing<Unit> {
  public:
    explicit UnitCsv(std::FILE* out) : Listing(out) {
        fmt::print(mOut, "track,number,time_us,sync,size,sha1,end_us\n");
    }

    void write(const Unit& unit) override {
        fmt::print(mOut, "{},{},{},{},{},{},{}\n", unit.track, unit.number, unit.timeUs, int(unit.sync),
                   unit.size, unit.sha1, unit.endUs ? std::to_string(*unit.endUs) : std::string());
    }
};

// ---- sniffing

class SniffTable : public Listing<SniffResult> {
  public:
    using Listing::Listing;

    void write(const SniffResult& result) override {
        mTable.addRow({result.claimed ? result.mime : "not claimed",
                       result.claimed ? fmt::format("{:.2f}", result.confidence) : std::string(),
                       printable(result.path)});
    }
    void finish() override { fmt::print(mOut, "{}", mTable.str()); }

  private:
    TextTable mTable{{{"CLAIMED AS"}, {"CONFIDENCE", Align::kRight}, {"FILE"}}};
};

}  // namespace

void printText(const DescribedFile& file, std::FILE* out) {
    TextTable table = trackTable();
    for (const TrackInfo& track : file.info.tracks) table.addRow(rowOf(track));
    fmt::print(out, "{}: {}\n{}", printable(file.info.path), printable(file.info.containerMime), table.str());
    printOrigin(file, out);
    if (!file.declared.empty()) printDeclared(file, out);
}

std::unique_ptr<Listing<Unit>> newUnitTable(std::FILE* out) {
    return std::make_unique<UnitTable>(out);
}

std::unique_ptr<Listing<Unit>> newUnitCsv(std::FILE* out) {
    return std::make_unique<UnitCsv>(out);
}

std::unique_ptr<Listing<SniffResult>> newSniffTable(std::FILE* out) {
    return std::make_unique<SniffTable>(out);
}

}  // namespace mkvx
