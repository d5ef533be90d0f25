#include "extract/Report.h"

#include <fmt/format.h>

#include "base/Json.h"

namespace mkvx {

void renderExtracted(const ExtractedTrack& extracted, Format format, std::FILE* out) {
    if (format != Format::kJson) {
        fmt::print(out, "{}: {}, {} units, {} bytes\n", extracted.output, extracted.form, extracted.units,
                   extracted.bytes);
        return;
    }
    Json object = newResult();
    object["file"] = extracted.file;
    object["track"] = extracted.track;
    object["output"] = extracted.output;
    object["form"] = extracted.form;
    object["units"] = extracted.units;
    object["unreadable"] = extracted.unreadable;
    object["bytes"] = extracted.bytes;
    fmt::print(out, "{}\n", dump(object));
}

}  // namespace mkvx
