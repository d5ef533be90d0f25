#include "tracks/Model.h"

namespace mkvx {

std::unique_ptr<Listing<Unit>> newUnitListing(Format format, const std::string& file, std::FILE* out) {
    switch (format) {
        case Format::kCsv:
            return newUnitCsv(out);
        case Format::kTable:
            return newUnitTable(out);
        case Format::kJson:
            return std::make_unique<JsonList<Unit>>(openUnitsJson(file), out);
        case Format::kJsonLines:
            break;
    }
    return std::make_unique<JsonLines<Unit>>(out);
}

std::unique_ptr<Listing<SniffResult>> newSniffListing(Format format, std::FILE* out) {
    if (format == Format::kTable) return newSniffTable(out);
    return std::make_unique<JsonLines<SniffResult>>(out);
}

}  // namespace mkvx
