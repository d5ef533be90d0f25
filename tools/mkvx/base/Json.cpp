#include "base/Json.h"

namespace mkvx {

Json newResult() {
    return {{"mkvx", kJsonFormatVersion}};
}

std::string dump(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string openResult(const Json& head, const char* listName) {
    std::string text = dump(head);
    text.pop_back();
    return text + ",\"" + listName + "\":[";
}

}  // namespace mkvx
