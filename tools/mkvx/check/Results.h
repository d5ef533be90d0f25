// What runs of check have printed as JSON, read again.
#pragma once
#include <functional>
#include <string>

#include "check/Model.h"

namespace mkvx {

// Calls `onResult` for each file in the JSON lines (--format jsonl) or the one object (--format json) in
// `path`, in their order. A last line without its end is what a run that was killed leaves, and is passed
// over. Returns how many bytes are whole. Throws FileFailure when the file cannot be read or holds anything
// else.
uint64_t readResults(const std::string& path, const std::function<void(CheckedFile)>& onResult);

}  // namespace mkvx
