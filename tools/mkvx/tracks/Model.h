// What the commands of this room print: a file's container and tracks, units as they come, and what the
// sniffer said. The values themselves are those of device/Model.h.
#pragma once
#include <cstdio>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "base/Format.h"
#include "base/Listing.h"
#include "codecs/StreamFacts.h"
#include "device/Declared.h"
#include "device/Model.h"
#include "tracks/Rates.h"

namespace mkvx {

// What the framework gets of a file, and what the file says beside that.
struct DescribedFile {
    FileInfo info;
    std::string title, muxingApp, writingApp;
    std::vector<StreamFacts> streams;                    // of each track of `info`
    std::map<uint32_t, DeclaredTrack> declared;          // by TrackInfo::number
    std::optional<std::map<uint64_t, TrackRate>> rates;  // where they were asked for
};

void printText(const DescribedFile& file, std::FILE* out);
void printJson(const DescribedFile& file, std::FILE* out);

// ---- units

// Any format. `file` is the name that JSON tells.
std::unique_ptr<Listing<Unit>> newUnitListing(Format format, const std::string& file, std::FILE* out);
std::unique_ptr<Listing<Unit>> newUnitTable(std::FILE* out);
std::unique_ptr<Listing<Unit>> newUnitCsv(std::FILE* out);
std::string openUnitsJson(const std::string& file);
void printJson(const Unit& unit, std::FILE* out);

// ---- sniffing

// kTable, which is printed as a whole at its end, or kJson (one object per file and line).
std::unique_ptr<Listing<SniffResult>> newSniffListing(Format format, std::FILE* out);
std::unique_ptr<Listing<SniffResult>> newSniffTable(std::FILE* out);
void printJson(const SniffResult& result, std::FILE* out);

}  // namespace mkvx
