// The examination's result as JSON, as docs/schemas/check.schema.json describes it, and back: the child that
// examines a file hands its result over in the same form that programs get.
#pragma once
#include <string>
#include <vector>

#include "check/Model.h"

namespace mkvx {

// One object in one line, without a line feed.
std::string toJsonLine(const CheckedFile& checked);
// All of a run in one object.
std::string toJson(const std::vector<CheckedFile>& files, Verdict worst, bool isComplete);

// From toJsonLine; throws std::runtime_error for anything else. Texts are valid UTF-8 then, with U+FFFD where
// the file's were not.
CheckedFile fromJsonLine(const std::string& line);

// The files of either form; throws some std::exception for anything else.
std::vector<CheckedFile> fromJsonResult(const std::string& text);

}  // namespace mkvx
