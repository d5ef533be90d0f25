// What an element means, and what stands at an offset of a file.
#pragma once
#include <string>
#include <vector>

#include "elements/Model.h"
#include "source/Options.h"

namespace mkvx {

// Names from the top of a file down to the element, by the table.
std::vector<std::string> pathOf(const ElementInfo& info);

// `subject` is an element's name, its ID in hexadecimal, or with a file a byte's offset in decimal. Throws
// UsageFailure, with suggestions, for what is none of these, and FileFailure for a file that cannot be read.
Explanation explain(const std::string& subject, const std::string& file, const SourceOptions& options);

}  // namespace mkvx
