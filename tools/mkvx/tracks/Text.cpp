#include "tracks/Model.h"

#include <fmt/format.h>

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

void printText(const FileInfo& info, std::FILE* out) {
    TextTable table = trackTable();
    for (const TrackInfo& track : info.tracks) table.addRow(rowOf(track));
    fmt::print(out, "{}: {}\n{}", printable(info.path), printable(info.containerMime), table.str());
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
