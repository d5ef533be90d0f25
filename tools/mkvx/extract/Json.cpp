#include "extract/Model.h"

#include <fmt/format.h>

#include "base/Json.h"

namespace mkvx {

void printJson(const ExtractedTrack& extracted, std::FILE* out) {
    Json object = newResult();
    object["file"] = extracted.file;
    object["track"] = extracted.track;
    object["output"] = extracted.output;
    object["form"] = extracted.form;
    object["units"] = extracted.units;
    object["unreadable"] = extracted.unreadable;
    object["bytes"] = extracted.bytes;
    fmt::print(out, "{}", dump(object));
}

}  // namespace mkvx
