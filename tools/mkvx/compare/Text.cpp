#include "compare/Model.h"

#include <fmt/format.h>

#include "base/Text.h"

namespace mkvx {
namespace {

class ComparedText : public Listing<ComparedFile> {
  public:
    using Listing::Listing;

    void write(const ComparedFile& compared) override { printText(compared, mOut); }
};

std::string orNothing(const std::string& text) {
    return text.empty() ? "nothing more" : text;
}

}  // namespace

const char* toString(Part part) {
    static constexpr const char* kNames[] = {"opening", "tracks", "units", "seeks", "end"};
    return kNames[static_cast<size_t>(part)];
}

void printText(const ComparedFile& compared, std::FILE* out) {
    fmt::print(out, "{}: {}; {}, {} and {} the same\n", printable(compared.path),
               compared.differences.empty() ? "the same" : "differs", counted(compared.tracks, "track"),
               counted(compared.reads, "read"), counted(compared.seeks, "seek"));
    for (const PartDifference& difference : compared.differences)
        fmt::print(out, "  {}: {}\n  {:{}}  other plug-in: {}\n", toString(difference.part),
                   orNothing(difference.base), "", std::string(toString(difference.part)).size(),
                   orNothing(difference.other));
}

std::unique_ptr<Listing<ComparedFile>> newComparedListing(Format format, std::FILE* out) {
    if (format == Format::kTable) return std::make_unique<ComparedText>(out);
    return std::make_unique<JsonLines<ComparedFile>>(out);
}

}  // namespace mkvx
