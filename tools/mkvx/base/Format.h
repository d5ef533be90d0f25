// The ways in which a command prints its result: text for people, or one of the stable machine formats.
//
// Renderers print to a stream and look at nothing but the model. Texts of the file that are not valid UTF-8
// get U+FFFD in place of the bad bytes, since neither JSON nor a terminal can carry them.
#pragma once

namespace mkvx {

enum class Format { kTable, kJson, kJsonLines, kCsv };

}  // namespace mkvx
