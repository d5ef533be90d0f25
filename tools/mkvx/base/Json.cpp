#include "base/Json.h"

#include "base/Base64.h"
#include "base/Text.h"

namespace mkvx {

Json newResult() {
    return {{"mkvx", kJsonFormatVersion}};
}

std::string dump(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

void setPath(Json& json, const char* name, const std::string& path) {
    json[name] = path;
    if (!isUtf8(path)) json[std::string(name) + "_base64"] = toBase64(path);
}

std::string pathIn(const Json& json, const char* name) {
    const std::string bytes = std::string(name) + "_base64";
    return json.contains(bytes) ? fromBase64(json[bytes]) : json.at(name).get<std::string>();
}

std::string openResult(const Json& head, const char* listName) {
    std::string text = dump(head);
    text.pop_back();
    return text + ",\"" + listName + "\":[";
}

}  // namespace mkvx
