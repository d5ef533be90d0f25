// JSON as every command prints it: members in the documented order, valid UTF-8 with U+FFFD where a file's
// text is not, and the version of the formats as the first member of each whole result.
#pragma once
#include <nlohmann/json.hpp>
#include <string>

namespace mkvx {

using Json = nlohmann::ordered_json;

// Of all formats that docs/schemas describes together. A new member leaves it as it is; one that goes, is
// renamed or changes its type, unit or meaning raises it.
constexpr int kJsonFormatVersion = 1;

// What a whole result begins as: {"mkvx": 1}.
Json newResult();

// Without a line feed.
std::string dump(const Json& json);

// A path that is not UTF-8 gets a second member, NAME_base64, with its bytes.
void setPath(Json& json, const char* name, const std::string& path);
// Throws std::exception where there is none, or its bytes are no base64.
std::string pathIn(const Json& json, const char* name);

// {"mkvx":1,...,"NAME":[ for a result whose list is longer than memory: the caller writes the items with
// commas in between, and ends it with ]}.
std::string openResult(const Json& head, const char* listName);

}  // namespace mkvx
