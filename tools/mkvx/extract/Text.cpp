#include "extract/Model.h"

#include <fmt/format.h>

namespace mkvx {

void printText(const ExtractedTrack& extracted, std::FILE* out) {
    fmt::print(out, "{}: {}, {} units, {} bytes\n", extracted.output, extracted.form, extracted.units,
               extracted.bytes);
}

}  // namespace mkvx
